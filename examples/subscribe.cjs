// Subscribes to addresses of a running example and prints every message it receives, one a line.
// Usage: node subscribe.cjs [--port N] [--updatelimit MS] [--interval MS] ADDRESS...
const WebSocket = require('ws');

const args = process.argv.slice(2);
let port = 8080;
const options = {};
const addresses = [];
for (let i = 0; i < args.length; ++i) {
    if (args[i] === '--port') {
        port = Number(args[++i]);
    } else if (args[i] === '--updatelimit' || args[i] === '--interval') {
        options[args[i].slice(2)] = Number(args[++i]);
    } else {
        addresses.push(args[i]);
    }
}
if (addresses.length === 0) {
    console.error('usage: subscribe.cjs [--port N] [--updatelimit MS] [--interval MS] ADDRESS...');
    process.exit(64);
}

const socket = new WebSocket(`ws://127.0.0.1:${port}/`);
socket.on('open', () => {
    for (const event of addresses) {
        socket.send(JSON.stringify({ type: 'subscribe', event, ...options }));
    }
});
socket.on('message', (data) => console.log(data.toString()));
socket.on('close', (code) => {
    console.error(`closed (${code})`);
    process.exit(0);
});
socket.on('error', (error) => {
    console.error(error.message);
    process.exit(1);
});
process.on('SIGINT', () => socket.close(1000));
