// The bar charts of counts by severity, source, type and log. A click on a bar filters by it.

const TOP_BARS = 8;
const MORE_BARS = 50;

class Facet {
  #section;
  #heading;
  #list = create('ol');
  #shown_bars = TOP_BARS;

  /**
   * `values` has a number for each message, `name_of` returns the name of such a number, and
   * `is_ranked` orders the bars by their counts. `on_toggle` receives the name of a clicked bar.
   */
  constructor(section, { title, values, name_of, is_ranked, on_toggle }) {
    this.values = values;
    this.numbers = [...new Set(values)];
    this.name_of = name_of;
    this.is_ranked = is_ranked;
    this.on_toggle = on_toggle;
    this.counts = new Uint32Array(this.numbers.reduce((a, b) => Math.max(a, b), 0) + 1);
    if (!is_ranked) this.numbers.sort((a, b) => b - a);
    this.#section = section;
    this.#heading = create('h2', {}, title);
    section.append(this.#heading, this.#list);
  }

  /** Returns one byte for each number, 1 if the filter accepts it. An empty filter accepts all. */
  accepted(names) {
    const result = new Uint8Array(this.counts.length);
    if (names.size === 0) return result.fill(1);
    for (const number of this.numbers) if (names.has(this.name_of(number))) result[number] = 1;
    return result;
  }

  /** Shows the counts. The bars of selected names are always among them. */
  show(selected) {
    const focused = document.activeElement?.dataset.bar;
    const had_focus = this.#list.contains(document.activeElement);
    const [bars, others] = this.#choose(selected);
    const longest = bars.reduce((most, number) => Math.max(most, this.counts[number]), 1);
    this.#list.replaceChildren(...bars.map((number) => this.#bar(number, longest, selected)));
    if (others.length > 0) this.#list.append(this.#others(others, longest, selected));
    if (had_focus) this.#focus(focused);
  }

  /** Returns the numbers that get a bar, and the others. */
  #choose(selected) {
    const numbers = this.numbers.filter((number) =>
      this.counts[number] > 0 || selected.has(this.name_of(number)));
    if (this.is_ranked) numbers.sort((a, b) => this.counts[b] - this.counts[a]);
    const is_bar = (number, index) =>
      index < this.#shown_bars || selected.has(this.name_of(number));
    return [numbers.filter(is_bar), numbers.filter((...each) => !is_bar(...each))];
  }

  #bar(number, longest, selected) {
    const name = this.name_of(number);
    const label = name === '' ? create('em', {}, 'none') : on_one_line(name);
    const count = this.counts[number];
    const button = create('button', {
      'type': 'button', 'aria-pressed': String(selected.has(name)), 'data-bar': String(number),
    }, create('span', { class: 'label' }, label), ' ',
    create('span', { class: 'number' }, formatted.format(count)), bar_of(count, longest));
    if (!this.is_ranked) button.classList.add(`is-${name}`);
    button.addEventListener('click', () => this.on_toggle(name));
    return create('li', {}, button);
  }

  #others(numbers, longest, selected) {
    const count = numbers.reduce((sum, number) => sum + this.counts[number], 0);
    const button = create('button', { 'type': 'button', 'class': 'others', 'data-bar': 'others' },
      create('span', { class: 'label' }, count_text(numbers.length, 'other')), ' ',
      create('span', { class: 'number' }, formatted.format(count)), bar_of(count, longest));
    button.addEventListener('click', () => {
      this.#shown_bars += MORE_BARS;
      this.show(selected);
    });
    return create('li', {}, button);
  }

  /** Gives the focus back to the new bar of the same name. */
  #focus(bar) {
    const buttons = [...this.#list.querySelectorAll('button')];
    (buttons.find((button) => button.dataset.bar === bar) ?? buttons.at(-1))?.focus();
  }
}

/** Returns a bar for a count. It is cut if it is longer than the longest one, as of the others. */
function bar_of(count, longest) {
  const bar = create('span', { class: 'bar' });
  bar.style.inlineSize = `${Math.min(100, (100 * count) / longest)}%`;
  return bar;
}

/**
 * Returns the messages that match the search and all filters. Counts, for each facet, those that
 * match the search and the other filters, so that its bars show the effect of the next click.
 */
function filter_messages(matches, view, facets) {
  const all = FACETS.map((name) => facets[name]);
  const accepted = FACETS.map((name) => facets[name].accepted(view[name]));
  for (const { counts } of all) counts.fill(0);
  const visible = new Uint32Array(matches.length);
  let count = 0;
  for (let i = 0; i < matches.length; i++) {
    if (!matches[i]) continue;
    const refused = all.filter(({ values }, index) => !accepted[index][values[i]]);
    if (refused.length === 0) {
      visible[count++] = i;
      for (const { counts, values } of all) counts[values[i]]++;
    } else if (refused.length === 1) {
      refused[0].counts[refused[0].values[i]]++;
    }
  }
  return visible.subarray(0, count);
}
