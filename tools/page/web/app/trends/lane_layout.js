// The lanes share the height there is, down to a least one; the last has the times under it.

const LEAST_LANE_HEIGHT = 44;
const LANE_HEAD_HEIGHT = 24;
const TIMES_HEIGHT = 26;

/**
 * @param {import('./lane.js').Lane[]} lanes
 * @param {{width: number, height: number}} size of all of them, in CSS pixels
 */
export function arrange(lanes, { width, height }) {
  if (lanes.length === 0 || width < 50) return;
  const share = Math.floor((height - TIMES_HEIGHT) / lanes.length) - LANE_HEAD_HEIGHT;
  const plot = Math.max(LEAST_LANE_HEIGHT, share);
  lanes.forEach((lane, place) => {
    const last = place === lanes.length - 1;
    lane.resize(width, last ? plot + TIMES_HEIGHT : plot, last);
  });
}
