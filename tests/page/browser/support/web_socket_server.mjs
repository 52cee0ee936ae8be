// The server's side of a WebSocket, as much of it as a played host needs: texts under 64 KiB from
// the client, texts of any length to it.
import { createHash } from 'node:crypto';

/** One frame, not masked, its length in as few bytes as it needs. @param {string} text */
function frame(text) {
  const payload = Buffer.from(text);
  const head = Buffer.alloc(payload.length < 126 ? 2 : payload.length < 65536 ? 4 : 10);
  head[0] = 0x81;
  head[1] = payload.length < 126 ? payload.length : payload.length < 65536 ? 126 : 127;
  if (head[1] === 126) head.writeUInt16BE(payload.length, 2);
  if (head[1] === 127) head.writeBigUInt64BE(BigInt(payload.length), 2);
  return Buffer.concat([head, payload]);
}

/** The text of a client's one short frame. @param {Buffer} bytes */
function unmasked(bytes) {
  const long = (bytes[1] & 0x7f) === 126;
  const length = long ? bytes.readUInt16BE(2) : bytes[1] & 0x7f;
  const mask = bytes.subarray(long ? 4 : 2, long ? 8 : 6);
  const payload = bytes.subarray(long ? 8 : 6, (long ? 8 : 6) + length);
  return payload.map((byte, i) => byte ^ mask[i % 4]).toString();
}

/**
 * Takes an upgrade.
 * @param {import('node:http').IncomingMessage} request
 * @param {import('node:stream').Duplex} socket
 * @param {(text: string) => void} greeted called with the client's first text
 * @returns {(text: string) => void} sends a text
 */
export function webSocketOf(request, socket, greeted) {
  const key = `${request.headers['sec-websocket-key']}258EAFA5-E914-47DA-95CA-C5AB0DC85B11`;
  const accept = createHash('sha1').update(key).digest('base64');
  socket.write('HTTP/1.1 101 Switching Protocols\r\nUpgrade: websocket\r\nConnection: Upgrade\r\n' +
    `Sec-WebSocket-Accept: ${accept}\r\n\r\n`);
  socket.once('data', (bytes) => greeted(unmasked(bytes)));
  socket.on('error', () => socket.destroy());
  return (text) => { if (!socket.destroyed) socket.write(frame(text)); };
}
