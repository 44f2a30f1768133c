// Reads or writes registers, or identifies the server, with an independent client and prints the answer as JSON:
//   node client.js PORT read ADDRESS COUNT [input]
//   node client.js PORT write ADDRESS WORD...
//   node client.js PORT identify CODE OBJECT
"use strict";

const ModbusRTU = require("modbus-serial");

async function main([port, verb, address, ...rest]) {
    const client = new ModbusRTU();
    await client.connectTCP("127.0.0.1", { port: Number(port) });
    client.setID(1);
    client.setTimeout(10000);
    try {
        if (verb === "write") {
            await client.writeRegisters(Number(address), rest.map(Number));
            console.log(JSON.stringify({}));
        } else if (verb === "identify") {
            const answer = await client.readDeviceIdentification(Number(address), Number(rest[0]));
            console.log(JSON.stringify({ objects: answer.data, conformity: answer.conformityLevel }));
        } else {
            const read = rest[1] === "input" ? client.readInputRegisters : client.readHoldingRegisters;
            const answer = await read.call(client, Number(address), Number(rest[0]));
            console.log(JSON.stringify({ registers: answer.data }));
        }
    } catch (error) {
        console.log(JSON.stringify({ exception: error.modbusCode, message: error.message }));
    }
    await new Promise((resolve) => client.close(resolve));
}

main(process.argv.slice(2)).catch((error) => {
    console.error(error);
    process.exit(1);
});
