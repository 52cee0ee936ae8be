// Rows as CSV (comma, CR LF, quotes doubled). A text that a spreadsheet would take for a formula gets an apostrophe.

/** @param {string|number|null} cell */
function csvCell(cell) {
  if (cell === null) return '';
  if (typeof cell === 'number') return String(cell);
  const safe = /^[=+\-@\t\r]/.test(cell) ? `'${cell}` : cell;
  return /[",\r\n']/.test(safe) ? `"${safe.replaceAll('"', '""')}"` : safe;
}

/**
 * @param {(string|number|null)[][]} rows
 */
export function csv(rows) {
  return rows.map((row) => row.map(csvCell).join(',') + '\r\n').join('');
}
