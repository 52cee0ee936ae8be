// One minute of one value in a few pixels: a bar from least to greatest for each second, none where it was not good.
import { SECONDS } from '../feed/spark_memory.js';

/**
 * @typedef {import('../feed/spark_memory.js').SparkMemory} SparkMemory
 */

const min = new Float64Array(SECONDS);
const max = new Float64Array(SECONDS);

/**
 * @param {HTMLCanvasElement} canvas
 * @param {SparkMemory} memory
 * @param {number} index
 * @param {number} now
 * @param {string} colour
 */
export function drawSparkline(canvas, memory, index, now, colour) {
  const context = canvas.getContext('2d');
  if (!context) return;
  const { width, height } = canvas;
  context.clearRect(0, 0, width, height);
  let least = Infinity;
  let greatest = -Infinity;
  memory.read(index, now, (place, low, high) => {
    min[place] = low;
    max[place] = high;
    if (low < least) least = low;
    if (high > greatest) greatest = high;
  });
  if (least > greatest) return;
  const room = height - 4;
  const scale = greatest === least ? 0 : room / (greatest - least);
  const base = greatest === least ? height / 2 : height - 2;
  const step = width / SECONDS;
  context.fillStyle = colour;
  for (let place = 0; place < SECONDS; place += 1) {
    if (Number.isNaN(min[place])) continue;
    const top = base - (max[place] - least) * scale;
    const bottom = base - (min[place] - least) * scale;
    context.fillRect(place * step, top - 1, step, Math.max(2, bottom - top + 1));
  }
}
