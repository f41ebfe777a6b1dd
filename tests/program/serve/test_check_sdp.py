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

from instrument import (CONNECTION, EXAMPLES, PROGRAM, Instrument, file_patch, sdp_file,
                        video_medium)

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

    def check(self, instrument, receiver, body, **more):
        """What the instrument says to a file that it is only asked about."""
        return instrument.request("POST", f"/check-sdp/{receiver.split('/')[1]}", body, **more)

    def assert_asked_alike(self, paths, *options):
        """POST /check-sdp and the command, with the same options, about all files."""
        with Instrument(*options, log_level="off") as instrument:
            receivers = instrument.resources("receivers")
            shown = {kind: receivers[at] for kind, at in RECEIVERS.items() if at < len(receivers)}
            before = instrument.get(f"{CONNECTION}/single/receivers/").body, [
                instrument.staged(receiver) for receiver in shown.values()]
            for kind, receiver in shown.items():
                report, _ = check_sdp(*options, "--receiver", kind, *paths)
                for path, entry in zip(paths, report["files"]):
                    answer = self.check(instrument, receiver, path.read_bytes())
                    self.assertEqual(answer.status, 200, path)
                    self.assertEqual(answer.headers["content-type"], "application/json")
                    del entry["file"]
                    # The command names its option.
                    entry["hints"] = [hint.replace("--receiver ", "") for hint in entry["hints"]]
                    self.assertEqual(answer.json, entry, path)
                    self.assertEqual(list(answer.json), list(entry))
            self.assertEqual(before, (instrument.get(f"{CONNECTION}/single/receivers/").body, [
                instrument.staged(receiver) for receiver in shown.values()]))
            self.assertEqual(instrument.status()["last_refusals"], [])

    def test_a_receiver_that_is_asked_says_the_same(self):
        one, two = video_medium("233.252.0.1", source="203.0.113.1"), video_medium("233.252.0.2")
        paths = self.write([
            ("two-legs", sdp_file(one, two).encode()), ("nothing", b""),
            ("latin-1", sdp_file(one, session="i=\u00e9").encode("latin-1")),
            ("origin", b"v=0\no=caf\xe9 \xff\xfe \x1b \xc3\xa9\ns=x\nt=0 0\n"), *corpus_files()])
        self.assert_asked_alike(paths)
        for name in ("st-2022-6.json", "single-stream-video.json"):
            self.assert_asked_alike(paths, "--config", str(EXAMPLES / name))

    @unittest.skipUnless(OTHER_MAKERS, "NMOS_SDP_DIR is not set")
    def test_a_receiver_that_is_asked_about_files_of_other_makers_says_the_same(self):
        paths = sorted(path for path in pathlib.Path(OTHER_MAKERS).rglob("*.sdp"))
        self.assertGreater(len(paths), 0)
        self.assert_asked_alike(paths)

    @unittest.skipUnless(jsonschema, "there is no python3-jsonschema")
    def test_the_schema_of_the_manual_fits_a_receiver_that_is_asked(self):
        schema = json.loads(re.search(r"```json\n(.*?)```", MANUAL.read_text(encoding="utf-8"),
                                      re.S).group(1))
        judged = {"definitions": schema["definitions"], **schema["definitions"]["judged"]}
        judged["required"] = [name for name in judged["required"] if name != "file"]
        validator = jsonschema.Draft7Validator(judged)
        with Instrument(log_level="off") as instrument:
            receiver = instrument.resources("receivers")[0]
            for content in (b"", sdp_file(video_medium("233.252.0.1")).encode()):
                validator.validate(self.check(instrument, receiver, content).json)

    def test_hostile_files(self):
        medium = "m=video 5004 RTP/AVP 96\r\nc=IN IP4 233.252.0.1/64\r\n"
        files = {"nothing": b"", "one line of 1 MiB": b"a=" + b"x" * (2**20 - 2),
                 "NUL": b"v=0\0\0\r\n", "not UTF-8": bytes(range(256)) * 16,
                 "an origin that is not UTF-8": b"v=0\no=\xff\xc0\x80 \"\\ \x01\n",
                 "10,000 media": ("v=0\r\n" + medium * 10_000).encode(),
                 "empty lines": b"\n" * 2**20, "JSON": b'{"transport_file": null}'}
        with Instrument() as instrument:
            receiver = instrument.resources("receivers")[0]
            for name, content in files.items():
                with self.subTest(name):
                    answer = self.check(instrument, receiver, content)
                    self.assertEqual(answer.status, 200, answer)
                    self.assertEqual(answer.json["verdict"], "refused")
                    self.assertNotEqual(answer.json["findings"], [])
            answer = self.check(instrument, receiver, b"x" * (2**20 + 1))
            self.assertEqual((answer.status, answer.json["code"]), (413, 413))
            self.assertEqual(instrument.get("/healthz").status, 200)

    def test_who_may_ask(self):
        for options in ((), ("--read-only",), ("--allow", "192.0.2.77")):
            with Instrument(*options) as instrument:
                receiver = instrument.resources("receivers")[0]
                sender = instrument.resources("senders")[0]
                content = sdp_file(video_medium("233.252.0.1"))
                for media_type in (None, "application/sdp", "application/json", "nonsense"):
                    headers = {"Content-Type": media_type} if media_type else {}
                    answer = self.check(instrument, receiver, content, headers=headers)
                    self.assertEqual(answer.status, 200, answer)
                    self.assertEqual(answer.json["verdict"], "taken")
                self.assertEqual(self.check(instrument, sender, content).status, 404)
                self.assertEqual(self.check(instrument, "receivers/" + "0" * 36, "").status, 404)
                path = f"/check-sdp/{receiver.split('/')[1]}"
                self.assertEqual(instrument.request("POST", path + "/", content).status, 404)
                self.assertEqual(instrument.get(path).status, 405)
                # What a browser asks before it sends a file (CORS).
                preflight = instrument.request("OPTIONS", path, headers={
                    "Origin": "http://example.com", "Access-Control-Request-Method": "POST",
                    "Access-Control-Request-Headers": "content-type"})
                self.assertEqual(preflight.status, 200)
                self.assertEqual(preflight.headers["access-control-allow-methods"], "POST, OPTIONS")
                self.assertEqual(preflight.headers["access-control-allow-origin"], "*")
                self.assertIn("Content-Type", preflight.headers["access-control-allow-headers"])

    def test_a_receiver_of_another_kind_may_take_it(self):
        with Instrument() as instrument:
            video, audio = (instrument.resources("receivers")[at] for at in (0, 4))
            content = sdp_file(video_medium("233.252.0.1"))
            self.assertEqual(self.check(instrument, video, content).json["hints"], [])
            self.assertEqual(self.check(instrument, audio, content).json["hints"],
                             ["a receiver of another kind would take it: video"])

    def test_hidden_receivers_cannot_be_asked(self):
        with Instrument() as instrument:
            audio = instrument.resources("receivers")[4]
        with Instrument(configuration={"streams": {"receiver_essences": "video only"}}) as fewer:
            self.assertEqual(self.check(fewer, audio, "").status, 404)

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
