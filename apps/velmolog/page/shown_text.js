'use strict';

// Texts of a log, as they are safe to see: each is isolated, and no character is invisible.

const INVISIBLE = /[\p{C}\p{Zl}\p{Zp}\p{Default_Ignorable_Code_Point}]/u;
const INVISIBLE_EACH = new RegExp(`(${INVISIBLE.source})`, 'u');
const INVISIBLE_IN_LINES = /(?![\n\t])[\p{C}\p{Zl}\p{Zp}\p{Default_Ignorable_Code_Point}]/u;
const INVISIBLE_IN_LINES_EACH = new RegExp(`(${INVISIBLE_IN_LINES.source})`, 'u');

const MAX_ROW_CHARACTERS = 500;
const MAX_DETAIL_CHARACTERS = 100_000; // more elements than that take seconds

/** Returns a new element. `parts` are nodes and texts. */
function create(name, attributes = {}, ...parts) {
  const element = document.createElement(name);
  for (const [key, value] of Object.entries(attributes)) element.setAttribute(key, value);
  element.append(...parts);
  return element;
}

/** Returns the name of a character, such as "U+202E". */
function code_point(character) {
  return `U+${character.codePointAt(0).toString(16).toUpperCase().padStart(4, '0')}`;
}

/** Returns the text and, for each invisible character, an element with its name. */
function visible_parts(text, each) {
  return text.split(each).map((part, index) =>
    index % 2 ? create('span', { class: 'code-point' }, code_point(part)) : part);
}

function isolated(text, pattern, each) {
  return create('bdi', {}, ...(pattern.test(text) ? visible_parts(text, each) : [text]));
}

/** Returns the text without the half of a character at its end. */
function whole_characters(text) {
  return text.replace(/[\uD800-\uDBFF]$/, '');
}

/** Returns the text on one line, cut if it is too long to be read there. */
function on_one_line(text) {
  const is_long = text.length > MAX_ROW_CHARACTERS;
  const cut = is_long ? `${whole_characters(text.slice(0, MAX_ROW_CHARACTERS))}…` : text;
  return isolated(cut, INVISIBLE, INVISIBLE_EACH);
}

/** Returns the text with its line breaks and tabs. States how much is left out of a huge one. */
function in_lines(text) {
  const shown = whole_characters(text.slice(0, MAX_DETAIL_CHARACTERS));
  const element = isolated(text.length > MAX_DETAIL_CHARACTERS ? shown : text,
    INVISIBLE_IN_LINES, INVISIBLE_IN_LINES_EACH);
  if (text.length > MAX_DETAIL_CHARACTERS)
    element.append(create('em', {}, `… and ${count_text(text.length - shown.length, 'character')}`));
  return element;
}

/** Returns the text for a title or an option, which have no elements. */
function as_plain_text(text) {
  return text.split(INVISIBLE_EACH)
    .map((part, index) => (index % 2 ? code_point(part) : part)).join('');
}

const formatted = new Intl.NumberFormat('en');
function count_text(count, noun) {
  return `${formatted.format(count)} ${noun}${count === 1 ? '' : 's'}`;
}
