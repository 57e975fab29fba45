"""Instances of rsyslogd with the installed recipes, private folders and ports of loopback."""
import pathlib
import socket
import subprocess

MAIN = """
global(workDirectory="{folder}/work" localHostname="{name}")
module(load="immark")
include(file="{folder}/recipe.conf")
syslog.* action(type="omfile" file="{folder}/own.log")
"""


def free_port():
    with socket.socket() as listener:
        listener.bind(("127.0.0.1", 0))
        return str(listener.getsockname()[1])


class Daemon:
    def __init__(self, program, folder, recipe, replacements):
        self.program, self.folder, self.process = program, folder, None
        for part in ("work", "spool", "log"):
            (folder / part).mkdir(parents=True)
        text = pathlib.Path(recipe).read_text(encoding="utf-8")
        for old, new in replacements.items():
            if old not in text:
                raise SystemExit(f"{recipe} has no {old}")
            text = text.replace(old, new)
        (folder / "recipe.conf").write_text(text, encoding="utf-8")
        main = MAIN.format(folder=folder, name=folder.name)
        (folder / "main.conf").write_text(main, encoding="utf-8")

    def command(self, *options):
        return [self.program, *options, "-f", str(self.folder / "main.conf")]

    def check(self):
        """Refuses a recipe with a mistake, which rsyslogd otherwise ignores."""
        run = subprocess.run(self.command("-N1"), capture_output=True, text=True, check=False)
        if run.returncode or "error" in run.stderr:
            raise SystemExit(f"{self.folder.name}: {run.stderr}")

    def start(self):
        with open(self.folder / "output", "ab") as output:
            self.process = subprocess.Popen(
                self.command("-n", "-i", str(self.folder / "pid")), stdout=output, stderr=output
            )

    def stop(self, is_kill=False):
        if self.process:
            (self.process.kill if is_kill else self.process.terminate)()
            self.process.wait()
            self.process = None
