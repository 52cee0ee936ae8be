// Requests as no browser would send them: any Host, any Origin, with and without the token.
import { request } from 'node:http';
import { connect } from 'node:net';
import { randomBytes } from 'node:crypto';

/**
 * @param {string} url
 * @param {{ method?: string, headers?: Record<string, string>, body?: string }} [how]
 * @returns {Promise<{ status: number, body: string, headers: import('node:http').IncomingHttpHeaders }>}
 */
export function asked(url, { method = 'GET', headers = {}, body } = {}) {
  return new Promise((resolve, reject) => {
    const sent = request(url, { method, headers, agent: false }, (answer) => {
      let said = '';
      answer.setEncoding('utf8').on('data', (text) => { said += text; });
      answer.on('end', () => resolve({ status: answer.statusCode ?? 0, body: said, headers: answer.headers }));
    });
    sent.on('upgrade', (answer, socket) => {
      socket.destroy();
      resolve({ status: answer.statusCode ?? 0, body: '', headers: answer.headers });
    });
    sent.on('error', reject);
    sent.end(body);
  });
}

/** The headers that ask for a WebSocket. @param {Record<string, string>} headers */
export function webSocket(headers = {}) {
  return {
    Connection: 'Upgrade', Upgrade: 'websocket', 'Sec-WebSocket-Version': '13',
    'Sec-WebSocket-Key': randomBytes(16).toString('base64'), ...headers,
  };
}

/** One masked text frame of a client. @param {string} text under 64 KiB */
function frame(text) {
  const payload = Buffer.from(text);
  const mask = randomBytes(4);
  const length = payload.length < 126 ? Buffer.from([0x80 | payload.length]) : Buffer.alloc(3, 0x80 | 126);
  if (length.length === 3) length.writeUInt16BE(payload.length, 1);
  return Buffer.concat([Buffer.from([0x81]), length, mask, payload.map((byte, i) => byte ^ mask[i % 4])]);
}

/**
 * A client of the live messages that takes the first bytes of them and then never reads again.
 * @param {string} url the page's, with its token
 * @returns {Promise<import('node:net').Socket>} destroy it in the end
 */
export function clientThatStopsReading(url) {
  const { hostname, port, host, hash } = new URL(url);
  const lines = Object.entries(webSocket({ Host: host })).map(([name, value]) => `${name}: ${value}\r\n`);
  return new Promise((resolve, reject) => {
    const socket = connect(Number(port), hostname, () => {
      socket.write(`GET /api/v1/live HTTP/1.1\r\n${lines.join('')}\r\n`);
      socket.write(frame(JSON.stringify({ token: hash.slice('#token='.length), epoch: null, sequence: 0 })));
    });
    socket.once('data', (bytes) => {
      socket.pause();
      if (bytes.toString('latin1').startsWith('HTTP/1.1 101')) resolve(socket);
      else reject(new Error(bytes.toString('latin1')));
    });
    socket.on('error', reject);
  });
}
