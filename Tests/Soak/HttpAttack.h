#pragma once

namespace Soak {

/// Runs the program with an assembly of 60,000 blocks, the document of which 256 connections ask for with its schema.
/// Half of them read what they get and ask again; the others ask eight times and read nothing, until the sensor closes
/// their connections, and come back. Returns 1 when
///  - the program occupies more than 400 MiB above what it did before,
///  - "/healthz" or a Modbus command takes more than a second,
///  - the document can't be read within half a minute when all of them have gone,
/// else 0. Throws when the sensor doesn't answer.
int HttpAttack(int seconds);

} // namespace Soak
