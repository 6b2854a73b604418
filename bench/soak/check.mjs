// Reads back every write the soak saw acknowledged: a playlist renamed last to a name must show that
// name, a deleted one must be gone (404); playlists written to without an answer are left out. Usage: node check.mjs PORT RECORD_FILE
import { readFileSync } from 'node:fs';
import http from 'node:http';

const [port, recordFile] = process.argv.slice(2);
const agent = new http.Agent({ keepAlive: true, maxSockets: 8 });

function get(path) {
    return new Promise((resolve, reject) => {
        http.get({ host: '127.0.0.1', port, path, agent }, (response) => {
            let body = '';
            response.setEncoding('utf8');
            response.on('data', (chunk) => { body += chunk; });
            response.on('end', () => resolve({ status: response.statusCode, body }));
        }).on('error', reject);
    });
}

const records = readFileSync(recordFile, 'utf8').split('\n').filter((line) => line !== '');
// A write without an answer may or may not have happened; a create without one has no address.
const unsure = new Set(records.filter((line) => line.startsWith('unsure ')).map((line) => line.split(' ')[1]));
const lines = records.filter((line) => !line.startsWith('unsure ') && !unsure.has(line.split(' ')[1]));
let named = 0;
let gone = 0;
const lost = [];
for (let i = 0; i < lines.length; i += 8) {
    await Promise.all(lines.slice(i, i + 8).map(async (line) => {
        const [kind, address, name] = line.split(' ');
        if (kind === 'name') {
            const answer = await get(`${address}?$fields=name`);
            if (answer.status !== 200 || JSON.parse(answer.body).data.name !== name) {
                lost.push(`${line}: ${answer.status} ${answer.body}`);
            }
            ++named;
        } else {
            const answer = await get(address);
            if (answer.status !== 404) {
                lost.push(`${line}: ${answer.status} ${answer.body}`);
            }
            ++gone;
        }
    }));
}
agent.destroy();
console.log(`checked ${named} playlists by their last acknowledged name and ${gone} acknowledged deletes, ` +
            `left out ${unsure.size} written to without an answer: ${lost.length} lost`);
for (const line of lost.slice(0, 20)) {
    console.log(`lost: ${line}`);
}
process.exit(lost.length === 0 ? 0 : 1);
