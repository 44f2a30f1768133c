// Reads registers with an independent client and prints them as JSON: node read.js PORT ADDRESS COUNT [input]
"use strict";

const ModbusRTU = require("modbus-serial");

async function main([port, address, count, kind]) {
    const client = new ModbusRTU();
    await client.connectTCP("127.0.0.1", { port: Number(port) });
    client.setID(1);
    client.setTimeout(10000);
    try {
        const read = kind === "input" ? client.readInputRegisters : client.readHoldingRegisters;
        const answer = await read.call(client, Number(address), Number(count));
        console.log(JSON.stringify({ registers: answer.data }));
    } catch (error) {
        console.log(JSON.stringify({ exception: error.modbusCode, message: error.message }));
    }
    await new Promise((resolve) => client.close(resolve));
}

main(process.argv.slice(2)).catch((error) => {
    console.error(error);
    process.exit(1);
});
