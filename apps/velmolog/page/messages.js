// The messages of the page, as html_page_t wrote them.

const SEVERITIES = ['none', 'info', 'warning', 'error', 'critical'];

// The numbers of a row: these, then one text for each name of its shape, then a title and a text
// for each language.
const SHAPE = 0;
const LOG = 1;
const OFFSET = 2; // from that of the previous row
const LINE = 3; // the same
const SEVERITY = 4;
const TYPE = 5;
const SOURCE = 6;
const FIRST_TEXT = 7;

// In a title or a text, a character between two U+007F is an argument, or U+007F itself.
const MARK = '\u007F';
const MARKS = /\u007F(.)\u007F/g;
const FIRST_ARGUMENT = 'a'.charCodeAt(0);
const MARK_ITSELF = '~';

class Messages {
  #strings;

  /** `strings` has a line for each string, as in a string of JSON. */
  constructor(data, strings) {
    this.title = data.title;
    this.languages = data.languages;
    this.first_language = data.language;
    this.#strings = strings.split('\n');
    this.string_count = this.#strings.length - 1;
    this.rows = data.rows;
    this.shapes = data.shapes;
    this.#count_rows();
    this.#read_columns();
  }

  #count_rows() {
    const texts = 2 * Math.max(1, this.languages.length);
    this.name_counts = this.shapes.map((shape) => shape.flat().length);
    const sizes = this.name_counts.map((count) => FIRST_TEXT + count + texts);
    this.count = 0;
    for (let at = 0; at < this.rows.length; at += sizes[this.rows[at]]) this.count++;
    this.starts = new Uint32Array(this.count);
    for (let i = 0, at = 0; i < this.count; at += sizes[this.rows[at]]) this.starts[i++] = at;
  }

  #read_columns() {
    this.severities = new Uint8Array(this.count);
    this.types = new Uint32Array(this.count);
    this.sources = new Uint32Array(this.count);
    this.logs = new Uint32Array(this.count);
    this.offsets = new Float64Array(this.count);
    this.lines = new Float64Array(this.count);
    let offset = 0;
    let line = 0;
    for (let i = 0; i < this.count; i++) {
      const at = this.starts[i];
      this.severities[i] = this.rows[at + SEVERITY];
      this.types[i] = this.rows[at + TYPE];
      this.sources[i] = this.rows[at + SOURCE];
      this.logs[i] = this.rows[at + LOG];
      this.offsets[i] = offset += this.rows[at + OFFSET];
      this.lines[i] = line += this.rows[at + LINE];
    }
  }

  /** Returns a string by its number. */
  string(number) {
    const line = this.#strings[number];
    return line.includes('\\') ? JSON.parse(`"${line}"`) : line;
  }

  type(i) { return this.string(this.types[i]); }
  source(i) { return this.string(this.sources[i]); }
  log(i) { return this.string(this.logs[i]); }

  /** Returns the numbers of the names of arguments, elements and attributes. */
  shape(i) { return this.shapes[this.rows[this.starts[i]]]; }

  /** Returns the index in the row of the title in a language. The text follows it. */
  title_at(i, language) {
    const start = this.starts[i];
    return start + FIRST_TEXT + this.name_counts[this.rows[start]] + 2 * language;
  }

  title_text(i, language) { return this.#filled(i, this.title_at(i, language)); }
  text(i, language) { return this.#filled(i, this.title_at(i, language) + 1); }

  #filled(i, at) {
    const pattern = this.string(this.rows[at]);
    if (!pattern.includes(MARK)) return pattern;
    const first = this.starts[i] + FIRST_TEXT;
    return pattern.replace(MARKS, (mark, which) => (which === MARK_ITSELF
      ? MARK : this.string(this.rows[first + which.charCodeAt(0) - FIRST_ARGUMENT])));
  }

  /** Returns arguments, elements and attributes, each as pairs of a name and a text. */
  named_texts(i) {
    let at = this.starts[i] + FIRST_TEXT;
    return this.shape(i).map((names) =>
      names.map((name) => [this.string(name), this.string(this.rows[at++])]));
  }
}
