// Shows changed files line by line.

import {element} from './dom.js';

const signs = {kept: ' ', added: '+', removed: '−'};
const spoken = {kept: '', added: 'added: ', removed: 'removed: '};

export function differenceOf(files) {
  return files.map(({path, lines}) => element('section', {'class': 'file-difference', 'aria-label': path},
    element('h3', {'class': 'mono'}, path),
    element('ol', {'class': 'difference', tabindex: '0', 'aria-label': `Changes of ${path}`}, ...lines.map(lineOf))));
}

function lineOf({kind, line, text}) {
  return element('li', {'data-kind': kind}, element('span', {'class': 'line-number', 'aria-hidden': 'true'}, String(line)),
    element('span', {'aria-hidden': 'true'}, signs[kind]), element('span', {'class': 'unseen'}, spoken[kind]),
    element('code', {}, text));
}
