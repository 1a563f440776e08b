// What the check says about the configuration as it is now.

import {element, setText} from './dom.js';

function byId(id) { return document.getElementById(id); }

export class FindingsView {
  show({configuration, controls}) {
    // Before the first control has a name, there is nothing to judge.
    byId('findings-card').hidden = configuration.exists === false && controls.length === 0;
    const {problem, findings = [], starts} = configuration;
    const good = problem === '' && starts;
    byId('verdict').dataset.state = good ? 'good' : 'bad';
    setText(byId('verdict'), good ? 'the bridge starts with this' : 'the bridge would not start');
    const texts = problem ? [{severity: 'error', message: problem, hint: ''}] : findings;
    const rows = texts.map(({severity, file, line, message, hint}) => element('li', {'data-severity': severity},
      element('strong', {}, severity), element('span', {},
        `${file ? `${file}, line ${line}: ` : ''}${message}${hint ? `. ${hint}` : ''}`)));
    byId('findings').replaceChildren(...(rows.length > 0 ? rows : [element('li', {'class': 'note'}, 'Nothing.')]));
  }
}
