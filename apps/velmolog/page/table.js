// The table. Only the rows in sight are elements, so that it can have any number of them.

// Browsers do not lay out elements that are much higher. Further rows share the height.
const MAX_HEIGHT = 15_000_000;
const SPARE_ROWS = 8;

class Table {
  #element = document.getElementById('table');
  #head = document.getElementById('head');
  #rows = document.getElementById('rows');
  #row_of;
  #on_open;
  #on_move;
  #messages = new Uint32Array(0);
  #active = 0; // a position in #messages
  #shown = new Map(); // positions and their elements
  #is_waiting = false;
  #row_height = 1;

  /**
   * `row_of` returns the cells of a message. `on_open` and `on_move` receive the message that the
   * user opens or moves to.
   */
  constructor({ row_of, on_open, on_move }) {
    this.#row_of = row_of;
    this.#on_open = on_open;
    this.#on_move = on_move;
    this.#element.addEventListener('scroll', () => this.#render_soon());
    this.#element.addEventListener('keydown', (event) => this.#on_key(event));
    this.#rows.addEventListener('click', (event) => this.#on_click(event));
    new ResizeObserver(() => this.#keep_in_sight()).observe(this.#element);
  }

  /** Shows these messages. Keeps the active one in sight if it is among them. */
  show(messages, active_message) {
    const before = active_message ?? this.#messages[this.#active];
    this.#messages = messages;
    this.#active = Math.max(0, position_of(messages, before));
    this.#element.setAttribute('aria-rowcount', String(messages.length + 1));
    document.getElementById('empty').hidden = messages.length > 0;
    this.#resize();
    this.#scroll_to(this.#active);
  }

  /** Returns the message that the keys act on, or undefined in an empty table. */
  get active_message() { return this.#messages[this.#active]; }

  focus() { this.#element.focus(); }

  get count() { return this.#messages.length; }

  /** Shows that many rows at once, for a printer. */
  render_first(count) {
    this.#render(0, Math.min(count, this.count), 0);
  }

  refresh() {
    this.#shown.clear();
    this.#render_in_sight();
  }

  get #viewport() { return this.#element.clientHeight - this.#head.offsetHeight; }
  get #height() { return this.#messages.length * this.#row_height; }

  /** Returns how far the rows move while the scroll bar moves by one pixel. */
  get #scale() {
    const hidden = Math.min(this.#height, MAX_HEIGHT) - this.#viewport;
    return hidden > 0 ? (this.#height - this.#viewport) / hidden : 1;
  }

  /** Keeps the active row in sight, unless the user has moved away from it. */
  #keep_in_sight() {
    const was_in_sight = this.#shown.has(this.#active);
    this.#resize();
    if (was_in_sight) this.#scroll_to(this.#active);
  }

  #resize() {
    const probe = create('div', { class: 'row' });
    this.#rows.append(probe);
    this.#row_height = probe.getBoundingClientRect().height || 1;
    probe.remove();
    this.#rows.style.blockSize = `${Math.min(this.#height, MAX_HEIGHT)}px`;
    this.refresh();
  }

  #render_soon() {
    if (this.#is_waiting) return;
    this.#is_waiting = true;
    requestAnimationFrame(() => {
      this.#is_waiting = false;
      this.#render_in_sight();
    });
  }

  #render_in_sight() {
    const top = this.#element.scrollTop * this.#scale;
    const first = Math.floor(top / this.#row_height) - SPARE_ROWS;
    const last = Math.ceil((top + this.#viewport) / this.#row_height) + SPARE_ROWS;
    this.#render(Math.max(0, first), Math.min(last, this.#messages.length),
      this.#element.scrollTop - top);
  }

  #render(first, last, shift) {
    const shown = new Map();
    for (let position = first; position < last; position++) {
      const row = this.#shown.get(position) ?? this.#create_row(position);
      row.style.top = `${position * this.#row_height + shift}px`;
      row.setAttribute('aria-selected', String(position === this.#active));
      shown.set(position, row);
    }
    this.#shown = shown;
    this.#rows.replaceChildren(...shown.values());
    if (shown.has(this.#active))
      this.#element.setAttribute('aria-activedescendant', `row-${this.#active}`);
    else this.#element.removeAttribute('aria-activedescendant');
  }

  #create_row(position) {
    return create('div', {
      'id': `row-${position}`, 'class': 'row', 'role': 'row', 'aria-rowindex': position + 2,
    }, ...this.#row_of(this.#messages[position]));
  }

  #scroll_to(position) {
    const top = position * this.#row_height;
    const before = this.#element.scrollTop * this.#scale;
    const last_top = top + this.#row_height - this.#viewport;
    const after = Math.min(top, Math.max(before, last_top));
    if (after !== before) this.#element.scrollTop = after / this.#scale;
    this.#render_in_sight();
  }

  #move_to(position) {
    if (this.#messages.length === 0) return;
    this.#active = Math.min(Math.max(0, position), this.#messages.length - 1);
    this.#scroll_to(this.#active);
    this.#on_move(this.active_message);
  }

  #on_key(event) {
    if (event.ctrlKey || event.altKey || event.metaKey) return;
    const page = Math.max(1, Math.floor(this.#viewport / this.#row_height) - 1);
    const steps = {
      ArrowUp: -1, ArrowDown: 1, PageUp: -page, PageDown: page, Home: -Infinity, End: Infinity,
    };
    if (event.key in steps) this.#move_to(this.#active + steps[event.key]);
    else if (event.key === 'Enter' && this.#messages.length > 0) this.#on_open(this.active_message);
    else return;
    event.preventDefault();
  }

  #on_click(event) {
    const row = event.target.closest('.row');
    if (!row) return;
    this.#active = Number(row.id.slice('row-'.length));
    this.#render_in_sight();
    this.#on_open(this.active_message);
  }
}

/** Returns the position of a number in sorted ones, -1 if it is not among them. */
function position_of(sorted, number) {
  let low = 0;
  let high = sorted.length;
  while (low < high) {
    const middle = (low + high) >> 1;
    if (sorted[middle] < number) low = middle + 1;
    else high = middle;
  }
  return sorted[low] === number ? low : -1;
}
