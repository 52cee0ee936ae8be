// Bytes as lines of sixteen, with offset and characters.

/**
 * @param {string} bytes hexadecimal digits, with or without spaces
 * @returns {string}
 */
export function hexLines(bytes) {
  const pairs = bytes.replace(/[^0-9a-fA-F]/g, '').match(/../g) ?? [];
  const lines = [];
  for (let at = 0; at < pairs.length; at += 16) {
    const line = pairs.slice(at, at + 16);
    const characters = line.map((pair) => printable(Number.parseInt(pair, 16))).join('');
    lines.push(`${at.toString(16).padStart(4, '0')}  ${line.join(' ').padEnd(47)}  ${characters}`);
  }
  return lines.join('\n');
}

/** @param {number} code */
function printable(code) {
  return code >= 0x20 && code < 0x7f ? String.fromCharCode(code) : '.';
}
