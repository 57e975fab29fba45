"""The contrast of texts and bars, as WCAG 2.1 defines it."""

# Returns the lowest contrast for each kind of element that has a text of its own, and of the bars.
LOWEST_CONTRASTS = r"""
const canvas = document.createElement('canvas').getContext('2d', { willReadFrequently: true });

/** Returns red, green, blue and alpha, each from 0 to 1. */
function components(colour) {
  canvas.clearRect(0, 0, 1, 1);
  canvas.fillStyle = colour;
  canvas.fillRect(0, 0, 1, 1);
  return [...canvas.getImageData(0, 0, 1, 1).data].map((value) => value / 255);
}

function luminance([red, green, blue]) {
  const [r, g, b] = [red, green, blue].map((value) =>
    (value <= 0.04045 ? value / 12.92 : ((value + 0.055) / 1.055) ** 2.4));
  return 0.2126 * r + 0.7152 * g + 0.0722 * b;
}

/** Returns the first background that is not transparent. */
function background(element) {
  for (let at = element; at; at = at.parentElement) {
    const colour = components(getComputedStyle(at).backgroundColor);
    if (colour[3] === 1) return colour;
  }
  throw new Error('no background');
}

function contrast(a, b) {
  const [low, high] = [luminance(a), luminance(b)].sort((x, y) => x - y);
  return (high + 0.05) / (low + 0.05);
}

const lowest = {};
function add(name, value) {
  lowest[name] = Math.min(value, lowest[name] ?? Infinity);
}
for (const element of document.querySelectorAll('body *')) {
  const has_text = [...element.childNodes].some((node) => node.nodeType === Node.TEXT_NODE
    && node.data.trim() !== '');
  if (!element.checkVisibility() || !(has_text || element.matches('input, select'))) continue;
  const colour = components(getComputedStyle(element).color);
  add(element.className || element.tagName, contrast(colour, background(element)));
}
const input = document.getElementById('search');
add('placeholder', contrast(components(getComputedStyle(input, '::placeholder').color),
  background(input)));
for (const bar of document.querySelectorAll('.bar'))
  add('bar', contrast(components(getComputedStyle(bar).backgroundColor),
    background(bar.parentElement)));
return lowest;
"""
