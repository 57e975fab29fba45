// The search: which messages have the words in their shown text, their type or an argument.

class Search {
  #messages;
  #folded = null; // each string without capitals, from the first search on
  #folded_plain = new Map(); // the same of the texts that are composed

  constructor(messages) {
    this.#messages = messages;
  }

  /** Returns one byte for each message, 1 if it matches. An empty query matches all. */
  matches(query, language) {
    const result = new Uint8Array(this.#messages.count);
    if (query === '') return result.fill(1);
    const folded = query.toLowerCase();
    const has_query = this.#strings_with(folded);
    const shapes_with = this.#messages.shapes.map(([names]) =>
      names.some((name) => has_query[name]));
    for (let i = 0; i < result.length; i++)
      result[i] = this.#is_match(i, language, folded, has_query, shapes_with) ? 1 : 0;
    return result;
  }

  /** Searches each distinct string once, however many messages have it. */
  #strings_with(folded) {
    this.#folded ??= this.#messages.strings.map((text) => text.toLowerCase());
    const result = new Uint8Array(this.#folded.length);
    for (let i = 0; i < result.length; i++) result[i] = this.#folded[i].includes(folded) ? 1 : 0;
    return result;
  }

  #is_match(i, language, folded, has_query, shapes_with) {
    const { rows, starts, types } = this.#messages;
    if (has_query[types[i]] || shapes_with[rows[starts[i]]]) return true;
    const arguments_at = starts[i] + FIRST_TEXT;
    const arguments_end = arguments_at + this.#messages.shape(i)[0].length;
    for (let at = arguments_at; at < arguments_end; at++) if (has_query[rows[at]]) return true;
    const title_at = this.#messages.title_at(i, language);
    if (has_query[rows[title_at]]) return true;
    const text = rows[title_at + 1];
    return text === PLAIN ? this.#plain(i).includes(folded) : has_query[text] === 1;
  }

  #plain(i) {
    let text = this.#folded_plain.get(i);
    if (text === undefined) {
      text = this.#messages.plain_text(i).toLowerCase();
      this.#folded_plain.set(i, text);
    }
    return text;
  }
}
