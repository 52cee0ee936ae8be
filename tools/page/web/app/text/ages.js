// Times and lengths of time in words.

/**
 * How long ago something was: "< 1 s", "7 s", "3 min", "2 h 5 min", "4 d".
 * @param {number} ms
 */
export function age(ms) {
  const s = Math.floor(ms / 1000);
  if (s < 1) return '< 1 s';
  if (s < 120) return `${s} s`;
  const min = Math.floor(s / 60);
  if (min < 120) return `${min} min`;
  const h = Math.floor(min / 60);
  if (h < 48) return min % 60 === 0 ? `${h} h` : `${h} h ${min % 60} min`;
  return `${Math.floor(h / 24)} d`;
}

/**
 * A measured length: "0.42 ms", "12.3 ms", "250 ms", "1.52 s", "3 min 5 s".
 * @param {number} ms
 */
export function length(ms) {
  const size = Math.abs(ms);
  if (size < 10) return `${ms.toFixed(2)} ms`;
  if (size < 100) return `${ms.toFixed(1)} ms`;
  if (size < 1000) return `${ms.toFixed(0)} ms`;
  if (size < 10000) return `${(ms / 1000).toFixed(3)} s`;
  if (size < 120000) return `${(ms / 1000).toFixed(2)} s`;
  const s = Math.round(size / 1000);
  return `${ms < 0 ? '-' : ''}${Math.floor(s / 60)} min ${s % 60} s`;
}

/**
 * How much later something was: "+250 ms". Nothing when it was not: the clock was set back in between.
 * @param {number} ms
 */
export function after(ms) {
  return ms < 0 ? '' : `+${length(ms)}`;
}

/**
 * @param {number} number
 * @param {number} digits
 */
function padded(number, digits) {
  return String(number).padStart(digits, '0');
}

/**
 * Wall clock of this machine: "09:41:07", with milliseconds "09:41:07.250".
 * @param {number} at
 * @param {boolean} [milliseconds]
 */
export function clockTime(at, milliseconds = false) {
  const date = new Date(at);
  const time = `${padded(date.getHours(), 2)}:${padded(date.getMinutes(), 2)}:${padded(date.getSeconds(), 2)}`;
  return milliseconds ? `${time}.${padded(date.getMilliseconds(), 3)}` : time;
}

/**
 * Clock time, with the date in front when it is not the day of `now`.
 * @param {number} at
 * @param {number} now
 */
export function dayTime(at, now) {
  const date = new Date(at);
  const time = clockTime(at);
  if (date.toDateString() === new Date(now).toDateString()) return time;
  return `${date.getFullYear()}-${padded(date.getMonth() + 1, 2)}-${padded(date.getDate(), 2)} ${time}`;
}
