"""Programs that append JSON lines to a file: velmolog, or lines of a test without it."""
import json
import subprocess
import time

import lines


class Appender:
    """Appends lines itself, each in two writes as a busy program can do."""

    def __init__(self, spool, log):
        self.spool, self.log, self.number = spool, str(log), 0

    def add(self, count):
        with open(self.spool, "ab", buffering=0) as spool:
            for self.number in range(self.number + 1, self.number + count + 1):
                line = lines.line(self.log, self.number).encode()
                spool.write(line[: len(line) // 2])
                spool.write(line[len(line) // 2 :])

    def stop(self):
        pass


class Follower:
    """Lets a recorder append messages to a log that velmolog follows."""

    def __init__(self, spool, log, velmolog, recorder):
        self.log, self.recorder = log, recorder
        subprocess.run([recorder, log, "1"], check=True)
        command = [velmolog, "--follow", "--format", "json", log]
        self.spool = spool
        with open(spool, "ab") as output:
            self.process = subprocess.Popen(command, stdout=output)

    def add(self, count):
        subprocess.run([self.recorder, self.log, str(count)], check=True)

    def wait_for(self, count):
        end = time.monotonic() + 60
        while self.spool.read_bytes().count(b"\n") < count:
            if time.monotonic() > end:
                raise SystemExit(f"velmolog does not write {count} lines")
            time.sleep(0.05)

    def stop(self):
        self.process.terminate()
        self.process.wait()


def count_lines(spool):
    """Returns the number of lines. Each must be a JSON object."""
    with open(spool, "rb") as file:
        return sum(isinstance(json.loads(line), dict) for line in file)
