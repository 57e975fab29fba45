// The search: which messages have the words in their shown text, their type or an argument.

class Search {
  #messages;
  #strings = null; // each string without capitals, from the first search on
  #texts = null; // the same of the texts in #language
  #language = null;

  constructor(messages) {
    this.#messages = messages;
  }

  /** Returns one byte for each message, 1 if it matches. An empty query matches all. */
  matches(query, language) {
    const result = new Uint8Array(this.#messages.count);
    if (query === '') return result.fill(1);
    const folded = query.toLowerCase();
    const texts = this.#texts_in(language);
    const has_query = this.#strings_with(folded);
    const shapes_with = this.#messages.shapes.map(([names]) =>
      names.some((name) => has_query[name]));
    for (let i = 0; i < result.length; i++)
      result[i] = texts[i].includes(folded) || this.#is_match(i, has_query, shapes_with) ? 1 : 0;
    return result;
  }

  /** Returns the title and the text of each message on two lines. */
  #texts_in(language) {
    if (this.#language === language) return this.#texts;
    const texts = new Array(this.#messages.count);
    for (let i = 0; i < texts.length; i++) {
      const title = this.#messages.title_text(i, language);
      const text = this.#messages.text(i, language);
      texts[i] = (title === '' ? text : `${title}\n${text}`).toLowerCase();
    }
    this.#language = language;
    this.#texts = texts;
    return texts;
  }

  /** Searches each distinct string once, however many messages have it. */
  #strings_with(folded) {
    this.#strings ??= Array.from({ length: this.#messages.string_count },
      (_, number) => this.#messages.string(number).toLowerCase());
    const result = new Uint8Array(this.#strings.length);
    for (let i = 0; i < result.length; i++) result[i] = this.#strings[i].includes(folded) ? 1 : 0;
    return result;
  }

  /** Returns whether the type, or the name or the text of an argument, has the words. */
  #is_match(i, has_query, shapes_with) {
    const { rows, starts, types } = this.#messages;
    if (has_query[types[i]] || shapes_with[rows[starts[i]]]) return true;
    const first = starts[i] + FIRST_TEXT;
    const end = first + this.#messages.shape(i)[0].length;
    for (let at = first; at < end; at++) if (has_query[rows[at]]) return true;
    return false;
  }
}
