// The details of one message: everything that the log has of it.

class Details {
  #element = document.getElementById('details');
  #messages;
  #on_close;

  constructor(messages, on_close) {
    this.#messages = messages;
    this.#on_close = on_close;
  }

  /** Shows a message, or nothing if it is null. */
  show(i, language) {
    this.#element.hidden = i === null;
    document.body.classList.toggle('has-details', i !== null);
    if (i === null) this.#element.replaceChildren();
    else this.#element.replaceChildren(...this.#parts(i, language));
    this.#element.scrollTop = 0;
  }

  #parts(i, language) {
    const messages = this.#messages;
    const [args, elements, attributes] = messages.named_texts(i);
    return [
      this.#head(i),
      ...this.#texts(i, language),
      ...named('Message', [
        ['severity', SEVERITIES[messages.severities[i]]],
        ['type', messages.type(i)],
        ['source', messages.source(i)],
      ]),
      ...named('Arguments', args),
      ...named('Elements', elements),
      ...named('Attributes', attributes),
      ...named('Position', [
        ['log', messages.log(i)],
        ['line', formatted.format(messages.lines[i])],
        ['offset', formatted.format(messages.offsets[i])],
      ]),
    ];
  }

  #head(i) {
    const close = create('button', { 'type': 'button', 'aria-label': 'Close the details' }, '✕');
    close.addEventListener('click', this.#on_close);
    return create('div', { class: 'details-head' }, severity_badge(this.#messages.severities[i]),
      create('span', { class: 'number' }, `Message ${formatted.format(i + 1)}`), close);
  }

  #texts(i, language) {
    const title = this.#messages.title_text(i, language);
    const text = create('p', { class: 'whole-text' },
      in_lines(this.#messages.text(i, language)));
    const lang = language_tag(this.#messages.languages[language]);
    if (lang) text.lang = lang;
    if (title === '') return [text];
    const heading = create('h2', { class: 'whole-text' }, in_lines(title));
    if (lang) heading.lang = lang;
    return [heading, text];
  }
}

/** Returns a heading and a list of names and texts, or nothing without any. */
function named(heading, pairs) {
  if (pairs.length === 0) return [];
  const list = create('dl');
  for (const [name, text] of pairs)
    list.append(
      create('dt', {}, name === '' ? create('em', {}, 'no name') : on_one_line(name)),
      create('dd', {}, text === '' ? create('em', {}, 'empty') : in_lines(text)));
  return [create('h3', {}, heading), list];
}

function severity_badge(severity) {
  const name = SEVERITIES[severity];
  return create('span', { class: `badge is-${name}` }, name);
}
