#!/usr/bin/env python3
"""listFolder.py EXECUTABLE FOLDER: the median time of a listing of FOLDER, in a daemon that lists it again and again,
and the daemon's memory at its peak."""
import json
import pathlib
import statistics
import subprocess
import sys
import time


def main():
    executable, folder = sys.argv[1:3]
    daemon = subprocess.Popen([executable], stdin=subprocess.PIPE, stdout=subprocess.PIPE, bufsize=1 << 20)
    request = {"requestID": "1", "command": "loadWorkspaceChildren", "rootPath": folder, "path": folder}
    times = []
    for _ in range(11):
        begin = time.perf_counter()
        daemon.stdin.write(json.dumps(request).encode() + b"\n")
        daemon.stdin.flush()
        line = daemon.stdout.readline()
        times.append(1000 * (time.perf_counter() - begin))
    count = len(json.loads(line)["workspaceDirectory"]["nodes"])
    status = pathlib.Path(f"/proc/{daemon.pid}/status").read_text()
    peak = next(line.split()[1] for line in status.splitlines() if line.startswith("VmHWM"))
    print(f"{count} entries: median {statistics.median(times):.1f} ms, first {times[0]:.1f} ms, "
          f"fastest {min(times):.1f} ms, peak {peak} kB")
    daemon.stdin.close()
    daemon.wait()


main()
