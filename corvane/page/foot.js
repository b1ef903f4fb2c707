// The foot of the page: how it is used, and what it is made with.

const keyHelp = [['← →', 'moment'], ['Shift ← →', 'along'], ['+ −', 'closer, farther'], ['0', 'all of it'],
  ['Esc', 'let go']];

function footOf(page) {
  const licence = document.getElementById('licence').textContent;
  return make('footer', {},
    make('p', {}, `Made by ${page.program}. `,
      make('span', {class: 'help'}, 'Drag in a panel to come closer, double click for all of it. Keys: ',
        keyHelp.flatMap(([key, text]) => [make('kbd', {}, key), ` ${text}  `]))),
    make('details', {}, make('summary', {}, 'Axes drawn by dygraphs (MIT)'), make('pre', {}, licence)));
}
