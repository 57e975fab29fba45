"""Lines as velmolog --format json writes them, for tests without velmolog."""
import datetime
import json

TEXTS = ["plain", "ä 日 \U0001f600", "<&> \"'\\", "two\nlines\ttab", "\x7f\x85\u2028", "é" * 33000]
SEVERITIES = ["none", "info", "warning", "error", "critical"]


def line(log, number, observed=True):
    """Returns a line, with its line break. Some have no timestamp, some no title."""
    text = TEXTS[number % len(TEXTS)]
    now = datetime.datetime.now(datetime.timezone.utc)
    members = {"log": log, "offset": 73 + 100 * number, "line": 4 + 5 * number}
    elements = {}
    if number % 2:
        elements["timestamp"] = members["timestamp"] = ["2026-11-21T14:05:07Z", "noon"][number // 2 % 2]
    members["severity"] = SEVERITIES[number % len(SEVERITIES)]
    members["type"] = f"type_{number % 4}"
    members["source"] = "audit"
    members["args"] = {"number": str(number)}
    members["elements"] = elements
    members["attributes"] = {"tool": "audit"}
    if number % 3:
        members["title"] = "Content"
    members["text"] = text
    if observed:
        members["observed"] = now.strftime("%Y-%m-%dT%H:%M:%S.%fZ")
    return json.dumps(members, ensure_ascii=False, separators=(",", ":")) + "\n"
