// The CSV of the trends as a file of the browser's downloads.
import { download } from '../view/dom.js';
import { trendCsv } from './trend_csv.js';

/**
 * @param {import('../feed/messages.js').Variable[]} variables
 * @param {import('./time_window.js').Span} span
 * @param {import('../view/announcer.js').Announcer} announcer
 */
export async function saveTrends(variables, span, announcer) {
  if (variables.length === 0) {
    announcer.problem('Nothing is pinned: there is nothing to save.');
    return;
  }
  try {
    const text = await trendCsv(variables, span);
    const name = `trend-${new Date(span.from).toISOString().replaceAll(':', '-')}.csv`;
    download(new Blob([text], { type: 'text/csv' }), name);
    announcer.say('The trends were saved');
  } catch (problem) {
    announcer.problem(`No CSV: ${problem instanceof Error ? problem.message : problem}`);
  }
}
