// Connects the parts of the page with the view and the address.

const PRINTED_ROWS = 2000;

/** Returns the tag of a locale, such as "de-AT" for "de_AT", or "" if the browser knows none. */
function language_tag(locale = '') {
  const [name, modifier] = locale.split('@');
  const script = { latin: '-Latn', cyrillic: '-Cyrl' }[modifier] ?? '';
  const [language, ...rest] = name.split('.')[0].split(/[-_]/);
  try {
    return Intl.getCanonicalLocales([language + script, ...rest].join('-'))[0];
  } catch {
    return '';
  }
}

/** Returns the name of a locale in its own language, and the locale. */
function language_name(locale) {
  const tag = language_tag(locale);
  if (tag === '') return as_plain_text(locale);
  const name = new Intl.DisplayNames([tag], { type: 'language' }).of(tag);
  return `${name} (${as_plain_text(locale)})`;
}

class Page {
  #view;
  #matches = null;
  #matched = null; // the query and the language of #matches
  #history = new ViewHistory();

  constructor(messages) {
    this.messages = messages;
    this.search = new Search(messages);
    this.facets = this.#create_facets();
    this.table = new Table({
      row_of: (i) => this.#row_of(i),
      on_open: (i) => this.#open(i),
      on_move: (i) => { if (this.#view.message !== null) this.#open(i); },
    });
    this.details = new Details(messages, () => this.#close());
    this.#fill_controls();
    this.#listen();
    this.#read_address();
  }

  #create_facets() {
    const { severities, sources, types, logs } = this.messages;
    const facet = (name, title, values, name_of, is_ranked) =>
      new Facet(document.getElementById(name), {
        title, values, name_of, is_ranked, on_toggle: (value) => this.#toggle(name, value),
      });
    const string = (number) => this.messages.string(number);
    return {
      severity: facet('severity', 'Severity', severities, (number) => SEVERITIES[number], false),
      source: facet('source', 'Source', sources, string, true),
      type: facet('type', 'Type', types, string, true),
      log: facet('log', 'Log', logs, string, true),
    };
  }

  #fill_controls() {
    const { title, languages } = this.messages;
    document.title = `${as_plain_text(title)} – velmolog`;
    document.getElementById('title').replaceChildren(on_one_line(title));
    document.getElementById('language-label').hidden = languages.length < 2;
    document.getElementById('language').append(...languages.map((locale, index) =>
      create('option', { value: index }, language_name(locale))));
    document.getElementById('log').hidden = this.facets.log.numbers.length < 2;
  }

  #listen() {
    const on = (id, event, action) =>
      document.getElementById(id).addEventListener(event, ({ target }) => action(target));
    on('search', 'input', (search) => this.#change({ query: search.value }, 'search'));
    on('search', 'change', () => this.#history.end_step());
    on('language', 'change', (select) => this.#change({ language: Number(select.value) }));
    on('theme', 'change', (select) => this.#change({ theme: select.value }));
    on('clear', 'click', () => this.#clear());
    document.getElementById('controls').addEventListener('submit', (event) => {
      event.preventDefault();
      this.table.focus();
    });
    document.addEventListener('keydown', (event) => this.#on_key(event));
    addEventListener('popstate', () => this.#read_address());
    addEventListener('beforeprint', () => this.#print());
    addEventListener('afterprint', () => this.#show());
    // In a narrow window, the messages come first. In a wide one, nothing opens the charts.
    const narrow = matchMedia('(max-width: 60rem)');
    const fold = () => { document.getElementById('facets').open = !narrow.matches; };
    narrow.addEventListener('change', fold);
    fold();
  }

  #on_key(event) {
    const is_typing = event.target.matches('input, select');
    if (event.key === '/' && !is_typing && !event.ctrlKey && !event.metaKey) {
      event.preventDefault();
      document.getElementById('search').select();
    } else if (event.key === 'Escape' && this.#view.message !== null && !is_typing) {
      this.#close();
    } else if (event.key === 'ArrowDown' && event.target.id === 'search') {
      event.preventDefault();
      this.table.focus();
    }
  }

  #read_address() {
    this.#history.end_step();
    this.#view = view_of(location.hash, this.messages);
    this.#show(this.#view.message);
  }

  /** Changes a part of the view. `kind` names changes that follow each other closely. */
  #change(change, kind = null) {
    this.#view = { ...this.#view, ...change };
    this.#history.show(hash_of(this.#view, this.messages), kind);
    this.#show();
  }

  #toggle(facet, name) {
    const names = new Set(this.#view[facet]);
    if (!names.delete(name)) names.add(name);
    this.#change({ [facet]: names });
  }

  #clear() {
    const { query, severity, source, type, log } = empty_view();
    this.#change({ query, severity, source, type, log });
  }

  #open(message) {
    if (this.#view.message === null) this.#history.end_step();
    this.#view = { ...this.#view, message };
    this.#history.show(hash_of(this.#view, this.messages), 'message');
    this.details.show(message, this.#view.language);
  }

  #close() {
    this.#change({ message: null });
    this.table.focus();
  }

  #show(active_message) {
    const view = this.#view;
    this.#show_controls();
    const visible = filter_messages(this.#matching(), view, this.facets);
    for (const name of FACETS) this.facets[name].show(view[name]);
    this.#show_count(visible.length);
    this.details.show(view.message, view.language);
    this.table.show(visible, active_message);
  }

  #print() {
    this.table.render_first(PRINTED_ROWS);
    if (this.table.count > PRINTED_ROWS)
      document.getElementById('count').append(`. The first ${formatted.format(PRINTED_ROWS)}:`);
  }

  #show_controls() {
    const { query, language, theme } = this.#view;
    const search = document.getElementById('search');
    if (search.value !== query) search.value = query;
    document.getElementById('language').value = String(language);
    document.getElementById('theme').value = theme;
    document.documentElement.dataset.theme = theme;
    const is_filtered = query !== '' || FACETS.some((name) => this.#view[name].size > 0);
    document.getElementById('clear').disabled = !is_filtered;
  }

  #show_count(visible) {
    const all = count_text(this.messages.count, 'message');
    document.getElementById('count').textContent =
      visible === this.messages.count ? all : `${formatted.format(visible)} of ${all}`;
  }

  #matching() {
    const { query, language } = this.#view;
    const wanted = JSON.stringify([query, language]);
    if (this.#matched !== wanted) this.#matches = this.search.matches(query, language);
    this.#matched = wanted;
    return this.#matches;
  }

  #row_of(i) {
    const { messages } = this;
    const { language } = this.#view;
    const title = messages.title_text(i, language);
    const text = [on_one_line(messages.text(i, language))];
    if (title !== '') text.unshift(create('strong', {}, on_one_line(title)), ' ');
    const cell = (name, ...parts) => create('span', { role: 'gridcell', class: name }, ...parts);
    const text_cell = cell('text', ...text);
    text_cell.lang = language_tag(messages.languages[language]);
    return [
      cell('severity', severity_badge(messages.severities[i])),
      cell('source', on_one_line(messages.source(i))),
      cell('type', on_one_line(messages.type(i))),
      text_cell,
      cell('line', formatted.format(messages.lines[i])),
    ];
  }
}

const [rows, strings] = ['data', 'strings'].map((id) => document.getElementById(id));
new Page(new Messages(JSON.parse(rows.textContent), strings.textContent));
rows.remove();
strings.remove();
performance.mark('first rows');
