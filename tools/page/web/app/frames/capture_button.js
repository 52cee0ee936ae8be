// Saves what went over the line in the last minute as a capture.
import { getFile } from '../link/requests.js';
import { age } from '../text/ages.js';
import { download, element } from '../view/dom.js';

const SECONDS = 60;

/** @param {import('../view/announcer.js').Announcer} announcer */
export function captureButton(announcer) {
  const button = element('capture', HTMLButtonElement);
  button.addEventListener('click', async () => {
    button.disabled = true;
    try {
      const { file, coveredMs } = await getFile('capture.pcapng', { seconds: SECONDS });
      download(file, `line-${new Date().toISOString().slice(0, 19).replaceAll(':', '-')}.pcapng`);
      if (coveredMs === null) announcer.say('The last minute was saved as a capture');
      else announcer.problem(`The capture holds the last ${age(coveredMs)} only: of so fast a line no more is kept`);
    } catch (problem) {
      announcer.problem(`No capture: ${problem instanceof Error ? problem.message : problem}`);
    } finally {
      button.disabled = false;
    }
  });
}
