#!/usr/bin/env python3
"""Starts the scan, prints ten frames, stops, and prints the last stamp, over the ASCII service of a sensor."""

import csv
import socket
import sys


class Sensor:
    def __init__(self, port, host="127.0.0.1"):
        self.connection = socket.create_connection((host, port), timeout=10)
        self.lines = self.connection.makefile("rw", newline="\r\n", encoding="utf-8")

    def read(self):
        line = self.lines.readline()
        if not line:
            raise ConnectionError("the sensor has closed the connection")
        return next(csv.reader([line.rstrip("\r\n")]))

    def ask(self, request):
        """The fields of the answer; frames that were pushed before it are passed over."""
        self.lines.write(request + "\r\n")
        self.lines.flush()
        kind, *fields = self.read()
        while kind == "DATA":
            kind, *fields = self.read()
        if kind != "OK":
            raise RuntimeError(f"{request}: error {fields[0]}, {fields[1]}")
        return fields


def main():
    sensor = Sensor(int(sys.argv[1]) if len(sys.argv) > 1 else 8190)
    sensor.ask("START")
    sensor.ask("PUSH ON height width stamp")
    for _ in range(10):
        # The field after DATA counts lines, not frames of the scan: the stamp contains the frame.
        _, _, height, width, frame, *_ = sensor.read()
        print(f"frame {frame}: " + ("no part" if width == "INVALID" else f"{height} mm high, {width} mm wide"))
    sensor.ask("PUSH OFF")
    sensor.ask("STOP")
    print("stopped at frame", sensor.ask("STAMP")[0])


main()
