// How the page makes elements. Text goes in as text, never as markup: names come from strangers.

/// make('td', {class: 'number', onclick: f}, 'text', element, ...)
function make(tag, attributes = {}, ...children) {
  const element = document.createElement(tag);
  for (const [name, value] of Object.entries(attributes)) {
    if (name.startsWith('on')) element.addEventListener(name.slice(2), value);
    else if (value !== null && value !== false) element.setAttribute(name, value === true ? '' : value);
  }
  element.append(...children.flat().filter((child) => child !== null && child !== undefined));
  return element;
}

/// Text of strangers beside other text, whose order it must not turn.
function foreign(text) {
  return make('bdi', {}, text);
}

function setText(element, text) {
  if (element.textContent !== text) element.textContent = text;
}

/// A patch in the colour of a line; `colour` is a number of the palette, null for what is not drawn.
function swatch(colour) {
  if (colour === null) return make('span', {class: 'swatch empty', 'aria-hidden': 'true'});
  const patch = make('span', {class: 'swatch', 'aria-hidden': 'true'});
  patch.style.setProperty('background', `var(--line-${colour})`);
  return patch;
}

/// Draws something, or no longer draws it.
function drawButton(colour, label, title) {
  return make('button', {type: 'button', class: 'draw', title, 'aria-pressed': String(colour !== null)},
    swatch(colour), make('span', {class: 'label'}, label));
}

/// Puts other rows into a table. What had the focus has it again in the row `of` the same thing.
function replaceRows(body, rows) {
  const focused = body.contains(document.activeElement) ? document.activeElement.closest('tr').of : null;
  body.replaceChildren(...rows);
  const again = focused && rows.find((row) => row.of === focused);
  if (again) again.querySelector('button').focus({preventScroll: true});
}

/// Runs the function once before the next picture, however often it is asked for.
function perFrame(action) {
  let asked = false;
  return () => {
    if (asked) return;
    asked = true;
    requestAnimationFrame(() => {
      asked = false;
      action();
    });
  };
}
