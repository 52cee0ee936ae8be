// Numbers as text.

/**
 * A number in as few digits as tell it: seven significant ones at most, or as many as given.
 * @param {number} value
 * @param {number} [digits]
 */
export function number(value, digits = 7) {
  if (!Number.isFinite(value)) return String(value);
  if (Number.isInteger(value) && Math.abs(value) < 1e15) return String(value);
  return String(Number(value.toPrecision(digits)));
}

/**
 * Bytes: "812 B", "3.2 KiB", "64.0 MiB".
 * @param {number} count
 */
export function bytes(count) {
  const units = ['B', 'KiB', 'MiB', 'GiB'];
  let unit = 0;
  let size = count;
  while (size >= 1024 && unit < units.length - 1) {
    size /= 1024;
    unit += 1;
  }
  return unit === 0 ? `${size} B` : `${size.toFixed(1)} ${units[unit]}`;
}

/**
 * One or many: "1 request", "3 requests".
 * @param {number} count
 * @param {string} one
 * @param {string} [many]
 */
export function counted(count, one, many = `${one}s`) {
  return `${count} ${count === 1 ? one : many}`;
}
