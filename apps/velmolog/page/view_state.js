// The view: search, filters, language, theme and the open message. The address has all of it.

const FACETS = ['severity', 'source', 'type', 'log'];

/** Returns the view with nothing selected. */
function empty_view() {
  return {
    query: '', severity: new Set(), source: new Set(), type: new Set(), log: new Set(),
    language: null, theme: '', message: null,
  };
}

/** Returns the view of an address. Ignores words that this page does not know. */
function view_of(hash, messages) {
  const words = new URLSearchParams(hash.slice(1));
  const view = empty_view();
  view.query = words.get('q') ?? '';
  for (const facet of FACETS) view[facet] = new Set(words.getAll(facet));
  const language = messages.languages.indexOf(words.get('lang'));
  view.language = language === -1 ? messages.first_language : language;
  view.theme = ['light', 'dark'].includes(words.get('theme')) ? words.get('theme') : '';
  const message = Number(words.get('message'));
  view.message = Number.isInteger(message) && message >= 1 && message <= messages.count
    ? message - 1 : null;
  return view;
}

/** Returns the address of a view, "#" if it is the first one. */
function hash_of(view, messages) {
  const words = new URLSearchParams();
  if (view.query) words.set('q', view.query);
  for (const facet of FACETS) for (const name of view[facet]) words.append(facet, name);
  if (view.language !== messages.first_language) words.set('lang', messages.languages[view.language]);
  if (view.theme) words.set('theme', view.theme);
  if (view.message !== null) words.set('message', String(view.message + 1));
  return `#${words}`;
}

/** Writes the view to the address. Steps of one kind, such as typing, are one step of "back". */
class ViewHistory {
  #last_kind = null;

  show(hash, kind) {
    if (hash === (location.hash || '#')) return;
    if (kind !== null && kind === this.#last_kind) history.replaceState(null, '', hash);
    else history.pushState(null, '', hash);
    this.#last_kind = kind;
  }

  /** Begins a new step. */
  end_step() {
    this.#last_kind = null;
  }
}
