// Gives the sensor one command through its Modbus registers and waits for the end:
//   node modbus-command.js HOST PORT COMMAND [ARGUMENT]
// COMMAND: start, stop, align, clear-align, load-job NAME, trigger, user-data TEXT
// Prints the command status; ends with 0 when the command is done and with 1 when it has failed.
// Needs the package modbus-serial. The addresses are those of the demo job's register map.
"use strict";

const ModbusRTU = require("modbus-serial");

const INPUT = 1000; // ControlInput: request word, command, 63 registers of arguments
const OUTPUT = 1100; // ControlOutput: request word, command status
const ARGUMENTS = 63;
const IN_PROGRESS = 1;
const DONE = 2;
const BUSY = 6; // the exception of a server that still runs a command
const PATIENCE = 60000; // milliseconds

const COMMANDS = {
    start: 1,
    stop: 2,
    align: 3,
    "clear-align": 4,
    "load-job": 5,
    trigger: 6,
    "user-data": 9,
};

// A job name has one character a register, user data two bytes a register.
function argumentsOf(command, text) {
    const bytes = [...Buffer.from(text)];
    const words = new Array(ARGUMENTS).fill(0);
    if (command === "load-job") {
        bytes.forEach((byte, i) => (words[i] = byte));
    } else if (command === "user-data") {
        bytes.forEach((byte, i) => (words[i >> 1] |= i % 2 === 0 ? byte << 8 : byte));
    }
    return words;
}

function checkArgument(command, text) {
    const limit = { "load-job": ARGUMENTS - 1, "user-data": 2 * ARGUMENTS }[command] ?? 0;
    if (Buffer.byteLength(text) > limit || (command === "load-job" && text === "")) {
        throw new Error(`${command} takes ${limit === 0 ? "no argument" : `an argument of at most ${limit} bytes`}`);
    }
}

const pause = () => new Promise((resolve) => setTimeout(resolve, 20));

async function run(client, command, text) {
    const end = Date.now() + PATIENCE;
    const [former] = (await client.readHoldingRegisters(INPUT, 1)).data;
    // Any other word will do. One by chance differs from that of a second client at the same time.
    const requestWord = (former + 1 + Math.floor(Math.random() * 0xffff)) & 0xffff;
    // All in one request, so that the arguments are there when the request word changes.
    const words = [requestWord, COMMANDS[command], ...argumentsOf(command, text)];
    for (;;) {
        try {
            await client.writeRegisters(INPUT, words);
            break;
        } catch (error) {
            if (error.modbusCode !== BUSY || Date.now() > end) {
                throw error;
            }
            await pause();
        }
    }
    for (;;) {
        const [echo, status] = (await client.readHoldingRegisters(OUTPUT, 2)).data;
        if (echo !== requestWord) {
            throw new Error("another client has given a command");
        }
        if (status !== IN_PROGRESS) {
            return status;
        }
        if (Date.now() > end) {
            throw new Error("the command is still in progress");
        }
        await pause();
    }
}

async function main([host, port, command, text = ""]) {
    if (!(command in COMMANDS)) {
        throw new Error(`usage: node modbus-command.js HOST PORT ${Object.keys(COMMANDS).join("|")} [ARGUMENT]`);
    }
    checkArgument(command, text);
    const client = new ModbusRTU();
    await client.connectTCP(host, { port: Number(port) });
    try {
        client.setID(1);
        client.setTimeout(5000);
        const status = await run(client, command, text);
        console.log(`command status ${status} (${status === DONE ? "done" : "failed"})`);
        process.exitCode = status === DONE ? 0 : 1;
    } finally {
        await new Promise((resolve) => client.close(resolve));
    }
}

main(process.argv.slice(2)).catch((error) => {
    console.error(error.message);
    process.exitCode = 1;
});
