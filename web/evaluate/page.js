// SPDX-License-Identifier: Apache-2.0
// Puts the page together.

import { byId, element } from '../shared/dom.js';
import { startPage } from '../shared/start.js';
import { makeStore } from '../shared/store.js';
import { settingTable } from '../shared/tables.js';
import { attachTheme } from '../shared/theme.js';
import { chartElement } from './chart.js';
import { recordingParts, ruleTable, sweepTable } from './figures.js';
import { attachTip, marksOf } from './marks.js';
import { chartsOf } from './model.js';

startPage((data) => {
    const store = makeStore({ dark: false, colours: {} }, (tell) => requestAnimationFrame(tell));
    const count = data.recordings.length;
    byId('summary').append(element('span', {}, `Measured on ${count} ${count === 1 ? 'recording' : 'recordings'}`));
    attachTheme(store);
    attachTip();
    byId('charts').append(...chartsOf(data).map((chart) => chartElement(chart, store, marksOf)));
    byId('totals').append(ruleTable(data, ({ total }) => total));
    byId('sweep-panel').hidden = data.points.length === 0;
    if (data.points.length > 0) byId('sweep').append(sweepTable(data));
    byId('recordings').append(...recordingParts(data));
    byId('settings').append(settingTable(data.settings));
});
