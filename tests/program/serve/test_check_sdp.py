# SPDX-License-Identifier: Apache-2.0
"""check-sdp says what serve does: the same files are taken, for the same legs.

NMOS_SDP_DIR names a folder with SDP files of other makers.
"""

import json
import os
import pathlib
import re
import subprocess
import tempfile
import unittest

from instrument import (EXAMPLES, PROGRAM, Instrument, file_patch, sdp_file, video_medium)

try:
    import jsonschema
except ImportError:
    jsonschema = None

TREE = EXAMPLES.parent.parent
MANUAL = TREE / "docs" / "check-sdp.md"
CORPORA = TREE / "fuzz" / "corpus"
OTHER_MAKERS = os.environ.get("NMOS_SDP_DIR")
# Kinds of receivers, and the position of one of each in the default configuration.
RECEIVERS = {"video": 0, "audio": 4, "ancillary": 20}


def check_sdp(*arguments):
    """The report of check-sdp, and its exit status."""
    run = subprocess.run([PROGRAM, "check-sdp", "--format", "json", *map(str, arguments)],
                         stdout=subprocess.PIPE, stderr=subprocess.PIPE, timeout=120, check=False)
    if run.stderr:
        raise AssertionError(run.stderr.decode())
    return json.loads(run.stdout.decode("ascii")), run.returncode


def staged_leg(leg):
    """A leg of check-sdp as the staged parameters have it."""
    return {"rtp_enabled": True, "source_ip": leg["source"], "destination_port": leg["port"],
            "multicast_ip": leg["address"] if leg["multicast"] else None,
            "interface_ip": "auto" if leg["multicast"] else leg["address"]}


def corpus_files():
    """What the fuzz targets for SDP begin with: files, and bytes of any kind."""
    for folder in sorted(CORPORA.glob("sdp_*")):
        for path in sorted(folder.iterdir()):
            content = path.read_bytes()
            yield f"{folder.name}-{path.name}", content
            if folder.name == "sdp_file":
                # The first two bytes are the target's own.
                yield f"{folder.name}-{path.name}-behind", content[2:]


class CheckSdp(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def write(self, files):
        """Of (name, content). Returns their paths."""
        paths = []
        for name, content in files:
            path = self.folder / f"{name}.sdp"
            path.write_bytes(content)
            paths.append(path)
        return paths

    def assert_same(self, instrument, receiver, path, entry):
        """What the instrument does with a file is what check-sdp said."""
        content = path.read_bytes()
        try:
            text = content.decode("utf-8")
        except UnicodeDecodeError:
            # JSON cannot carry it.
            self.assertEqual(entry["verdict"], "refused", path)
            return
        answer = instrument.patch(receiver, file_patch(text))
        taken = entry["verdict"] == "taken"
        self.assertEqual(answer.status, 200 if taken else 400, f"{path}: {entry}, {answer}")
        self.assertEqual(taken, bool(entry["legs"]))
        if not taken:
            return
        legs = answer.json["transport_params"]
        named = {leg["leg"]: leg for leg in entry["legs"]}
        for number, leg in enumerate(legs, 1):
            if number in named:
                self.assertEqual(leg, staged_leg(named[number]), path)
            else:
                self.assertFalse(leg["rtp_enabled"], path)

    def compare(self, paths, *options):
        """check-sdp and serve, with the same options, about all files."""
        taken = 0
        with Instrument(*options, log_level="off") as instrument:
            receivers = instrument.resources("receivers")
            shown = {kind: receivers[at] for kind, at in RECEIVERS.items() if at < len(receivers)}
            for kind, receiver in shown.items():
                report, _ = check_sdp(*options, "--receiver", kind, *paths)
                self.assertEqual([entry["file"] for entry in report["files"]],
                                 [str(path) for path in paths])
                for path, entry in zip(paths, report["files"]):
                    self.assertEqual(entry["receiver"], kind)
                    self.assert_same(instrument, receiver, path, entry)
                taken += report["summary"]["taken"]
        return taken

    def test_own_files_and_those_of_the_fuzz_targets(self):
        one, two = video_medium("233.252.0.1", source="203.0.113.1"), video_medium("233.252.0.2")
        files = [("two-legs", sdp_file(one, two)), ("one-leg", sdp_file(one)),
                 ("port-0", sdp_file(one, video_medium(port=0))),
                 ("unicast", sdp_file(video_medium("192.0.2.10"))),
                 ("unicast-elsewhere", sdp_file(video_medium("203.0.113.77"))),
                 ("longest", sdp_file(one + ["a=" + "x" * 4000])[:4095]),
                 ("no-line-end", sdp_file(one).rstrip()), ("null", "null"),
                 ("nul", sdp_file(one) + "\0"), ("utf-8", sdp_file(one, session="i=\u00e9\u20ac"))]
        files = [(name, text.encode("utf-8")) for name, text in files]
        files += [("latin-1", sdp_file(one, session="i=\u00e9").encode("latin-1")),
                  ("utf-16", sdp_file(one).encode("utf-16"))]
        with Instrument() as instrument:
            files += [(f"sender-{i}", instrument.sdp(sender).encode("utf-8"))
                      for i, sender in enumerate(instrument.resources("senders"))]
        files += corpus_files()
        paths = self.write(files)
        self.assertGreater(self.compare(paths), 20)

        fixed = self.folder / "fixed.json"
        fixed.write_text(json.dumps({"format_switching": {"allowed": False}}), encoding="utf-8")
        for configuration in (EXAMPLES / "st-2022-6.json", EXAMPLES / "single-stream-video.json",
                              fixed):
            self.compare(paths, "--config", str(configuration))

    @unittest.skipUnless(OTHER_MAKERS, "NMOS_SDP_DIR is not set")
    def test_files_of_other_makers(self):
        paths = sorted(path for path in pathlib.Path(OTHER_MAKERS).rglob("*.sdp"))
        self.assertGreater(len(paths), 0)
        self.compare(paths)
        self.compare(paths, "--config", str(EXAMPLES / "st-2022-6.json"))
        whole, _ = check_sdp(OTHER_MAKERS)
        self.assertEqual([entry["file"] for entry in whole["files"]], [str(path) for path in paths])

    @unittest.skipUnless(jsonschema, "there is no python3-jsonschema")
    def test_the_report_keeps_to_the_schema_of_the_manual(self):
        text = MANUAL.read_text(encoding="utf-8")
        schema = json.loads(re.search(r"```json\n(.*?)```", text, re.S).group(1))
        jsonschema.Draft7Validator.check_schema(schema)
        validator = jsonschema.Draft7Validator(
            schema, format_checker=jsonschema.draft7_format_checker)
        # Members may be added, but then the manual has to be told.
        strict = json.loads(json.dumps(schema), object_hook=lambda part: (
            {"additionalProperties": False, **part} if "properties" in part else part))
        paths = self.write([("good", sdp_file(video_medium(source="203.0.113.1")).encode("utf-8")),
                            ("nothing", b""), *corpus_files()])
        report, status = check_sdp(*paths, "/no/such/file")
        self.assertEqual(status, 2)
        for judge in (validator, jsonschema.Draft7Validator(strict)):
            self.assertEqual([error.message for error in judge.iter_errors(report)], [])
        self.assertEqual({entry["verdict"] for entry in report["files"]},
                         {"taken", "refused", "not readable"})
        del report["files"][0]["legs"]
        self.assertFalse(validator.is_valid(report))
