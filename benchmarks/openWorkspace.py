#!/usr/bin/env python3
"""openWorkspace.py EXECUTABLE FOLDER: opens FOLDER as a workspace and tells how long the response and the index took
and what the daemon's memory came to. The index is known to be ready when the processor time of its thread stands still."""
import json
import pathlib
import subprocess
import sys
import time


def field(process_id, name):
    for line in pathlib.Path(f"/proc/{process_id}/status").read_text().splitlines():
        if line.startswith(name):
            return int(line.split()[1])
    return 0


def index_thread_time(process_id):
    for task in pathlib.Path(f"/proc/{process_id}/task").iterdir():
        if (task / "comm").read_text().strip().endswith("workspace-index"[-15:]):
            fields = (task / "stat").read_text().rsplit(")", 1)[1].split()
            return int(fields[11]) + int(fields[12]), fields[0]
    return 0, "S"


def main():
    executable, folder = sys.argv[1:3]
    daemon = subprocess.Popen([executable], stdin=subprocess.PIPE, stdout=subprocess.PIPE)
    daemon.stdin.write(b'{"requestID":"0","command":"close"}\n')
    daemon.stdin.flush()
    daemon.stdout.readline()
    empty = field(daemon.pid, "VmRSS")
    begin = time.perf_counter()
    request = {"requestID": "1", "command": "openWorkspace", "rootPath": folder}
    daemon.stdin.write(json.dumps(request).encode() + b"\n")
    daemon.stdin.flush()
    response = json.loads(daemon.stdout.readline())
    answered = time.perf_counter()
    assert response["success"], response
    ready, last, last_change = answered, None, answered
    while time.perf_counter() - last_change < 1:
        now = index_thread_time(daemon.pid)
        if now != last:
            last, last_change = now, time.perf_counter()
            ready = last_change
        time.sleep(0.005)
    print(f"response {1000 * (answered - begin):.1f} ms, index quiet after {1000 * (ready - begin):.0f} ms")
    print(f"memory: {empty} kB empty, {field(daemon.pid, 'VmRSS')} kB now, {field(daemon.pid, 'VmHWM')} kB at the peak")
    daemon.stdin.close()
    daemon.wait()


main()
