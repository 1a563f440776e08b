"""What a run has found so far."""

import json


class Result:
    """Counts the faults tried and caught. The JSON file is written after each fault, so a run cut short leaves one."""

    def __init__(self, commit, seed, path):
        self.path = path
        self.record = {"commit": commit, "seed": seed, "finished": False, "uncompiled": 0, "folders": {}, "faults": []}

    def add(self, folder, fault, outcome, seconds):
        if outcome.verdict == "uncompiled":
            self.record["uncompiled"] += 1
            return
        counts = self.record["folders"].setdefault(folder, {"faults": 0, "caught": 0})
        counts["faults"] += 1
        counts["caught"] += outcome.verdict == "caught"
        place = {"id": fault.id, "file": fault.path, "line": fault.line, "text": fault.text, "change": fault.words}
        self.record["faults"].append(
            place | {"verdict": outcome.verdict, "by": outcome.by, "seconds": round(seconds, 1)}
        )
        self.save()

    def finish(self):
        self.record["finished"] = True
        self.save()

    def is_finished(self):
        return self.record["finished"]

    def save(self):
        if self.path:
            self.path.write_text(json.dumps(self.record, indent=1) + "\n")

    def survivors(self):
        return [fault for fault in self.record["faults"] if fault["verdict"] == "survived"]

    def total(self):
        rows = self.record["folders"].values()
        return {key: sum(counts[key] for counts in rows) for key in ("faults", "caught")}

    def print(self):
        print(f"\n{'folder':14}{'faults':>8}{'caught':>8}")
        for name, counts in [*self.record["folders"].items(), ("all", self.total())]:
            print(f"{name:14}{counts['faults']:8}{counts['caught']:8}")
        print(f"\nsurvivors: {len(self.survivors())}")
        for fault in self.survivors():
            print(f"{fault['file']}:{fault['line']}  {fault['text']}\n    {fault['change']}\n    {fault['id']}")
