# SPDX-License-Identifier: Apache-2.0
"""Which files may be the state file, and what happens to those beside it."""

import json
import os
import socket
import stat
import subprocess
import unittest

from instrument import IMMEDIATE, PORT, SERVE, Instrument, StateTest

ALLOWED = "allowed: a regular file, a link to one, or the name of a new file"
LAST_VERSION = "281474976710654:999999999"


def stable_hash(text):
    """FNV-1a, 64 bits."""
    value = 0xcbf29ce484222325
    for byte in text.encode():
        value = (value ^ byte) * 0x100000001b3 % 2 ** 64
    return value


class StateFile(StateTest):
    def start(self, **more):
        return Instrument("--state", str(self.file), **more)

    def refused(self, file):
        """What a start says that ends at once with status 2."""
        run = subprocess.run([*SERVE, "--first-free-port", "--port", PORT,
                              "--state", str(file)], stdin=subprocess.PIPE, cwd=self.folder,
                             stdout=subprocess.PIPE, stderr=subprocess.PIPE, timeout=20)
        self.assertEqual(run.returncode, 2, run.stderr)
        return run.stderr.decode()

    def test_one_process_at_a_time(self):
        with self.start() as first:
            said = self.refused(self.file)
            self.assertIn(f"state file {self.file}: in use by process {first.process.pid}", said)
            link = self.folder / "link"
            link.symlink_to(self.file)
            self.assertIn(f"in use by process {first.process.pid}", self.refused(link))
            link.unlink()
            self.assertEqual(self.names(), ["state", "state.lock"])
        self.assertEqual(self.names(), ["state"])

    def test_the_lock_of_a_killed_process_does_no_harm(self):
        with self.start() as instrument:
            instrument.process.kill()
            instrument.process.wait()
        self.assertEqual(self.names(), ["state", "state.lock"])
        with self.start():
            pass
        self.assertEqual(self.names(), ["state"])

    def test_a_lock_that_somebody_removed(self):
        with self.start():
            (self.folder / "state.lock").unlink()
            (self.folder / "state.lock").write_text("of another process")
        self.assertEqual((self.folder / "state.lock").read_text(), "of another process")

    def test_what_lies_in_the_place_of_the_lock(self):
        lock = self.folder / "state.lock"
        victim = self.folder / "victim"
        victim.write_text("precious")
        for place in (lambda: lock.symlink_to(victim), lock.mkdir, lambda: os.mkfifo(lock)):
            place()
            self.assertIn(f"state file {self.file}: cannot be locked: {lock}: ",
                          self.refused(self.file))
            lock.rmdir() if lock.is_dir() else lock.unlink()
        self.assertEqual(victim.read_text(), "precious")

    def test_a_link_planted_at_a_guessed_name_is_not_followed(self):
        victim = self.folder / "victim"
        victim.write_text("precious")
        (self.folder / "state.new").symlink_to(victim)
        with self.start() as instrument:
            receiver = instrument.resources("receivers")[0]
            self.assertEqual(instrument.patch(receiver, IMMEDIATE).status, 200)
        self.assertEqual(victim.read_text(), "precious")

    def test_left_overs_are_removed_and_nothing_else(self):
        left_over = "state.new-0123456789abcdef"
        (self.folder / left_over).write_text("x")
        kept = ["state.new", "state.new-", "state.new-0123456789abcdeF",
                "state.new-0123456789abcde", "state.new-0123456789abcdef0", "state.new-notes",
                "other.new-0123456789abcdef"]
        for name in kept:
            (self.folder / name).write_text("x")
        (self.folder / "state.new-00000000000000ff").mkdir()
        (self.folder / "state.new-00000000000000fe").symlink_to("nowhere")
        with self.start():
            pass
        self.assertEqual(self.names(), sorted(["state", "state.new-00000000000000fe",
                                               "state.new-00000000000000ff", *kept]))

    def test_mode_and_owner_are_kept(self):
        with self.start():
            pass
        self.file.chmod(0o640)
        owner = (12345, 23456)
        try:
            os.chown(self.file, *owner)
        except OSError:  # only root may give a file away, and not in every container
            owner = (os.getuid(), os.getgid())
        with self.start() as instrument:
            receiver = instrument.resources("receivers")[0]
            self.assertEqual(instrument.patch(receiver, IMMEDIATE).status, 200)
            found = self.file.stat()
            self.assertEqual(stat.S_IMODE(found.st_mode), 0o640)
            self.assertEqual((found.st_uid, found.st_gid), owner)
            # Nor does a file that somebody removed come back with another mode.
            self.file.unlink()
            self.assertEqual(instrument.patch(receiver, IMMEDIATE).status, 200)
            self.assertEqual(stat.S_IMODE(self.file.stat().st_mode), 0o640)

    def test_a_link_stays_a_link(self):
        target = self.folder / "folder" / "target"
        target.parent.mkdir()
        with Instrument("--state", str(target)):
            pass
        before = target.read_bytes()
        self.file.symlink_to("folder/target")
        with self.start() as instrument:
            receiver = instrument.resources("receivers")[0]
            instrument.wait_for_log("state restored")
            self.assertEqual(instrument.patch(receiver, IMMEDIATE).status, 200)
            self.assertTrue(self.file.is_symlink())
            self.assertNotEqual(target.read_bytes(), before)
            # What the link means was decided at the start.
            self.file.unlink()
            self.file.symlink_to("elsewhere")
            self.assertEqual(instrument.patch(receiver, IMMEDIATE).status, 200)
        self.assertEqual(self.names(), ["folder", "state"])
        self.assertEqual([path.name for path in target.parent.iterdir()], ["target"])

    def test_what_is_no_regular_file_is_refused_at_once(self):
        fifo, directory, listening = (self.folder / name for name in ("fifo", "dir", "socket"))
        os.mkfifo(fifo)
        directory.mkdir()
        server = socket.socket(socket.AF_UNIX)
        self.addCleanup(server.close)
        server.bind(str(listening))
        dangling, loop = self.folder / "dangling", self.folder / "loop"
        dangling.symlink_to("nothing")
        loop.symlink_to("loop")
        to_fifo = self.folder / "to_fifo"
        to_fifo.symlink_to("fifo")
        # A device that a mistake of the program cannot rename or remove.
        try:
            terminal = os.openpty()
        except OSError as error:
            self.skipTest(f"there are no terminals here: {error}")
        for descriptor in terminal:
            self.addCleanup(os.close, descriptor)
        device = os.ttyname(terminal[1])
        before = self.names()
        for file, found in ((fifo, "a FIFO"), (to_fifo, "a FIFO"), (directory, "a directory"),
                            (listening, "a socket"), (device, "a device"),
                            (dangling, "a symbolic link to nothing"),
                            (loop, "a symbolic link to nothing")):
            with self.subTest(str(file)):
                self.assertIn(f"state file {file}: found {found}, {ALLOWED}", self.refused(file))
        for name in ("", "-", f"{self.folder}/new/"):
            with self.subTest(name):
                self.assertIn(f'found "{name}", allowed: the name of a file', self.refused(name))
        self.assertEqual(self.names(), before)

    def changed_state(self, change):
        """The file with a change of its state, and the right checksum for it."""
        document = json.loads(self.file.read_text())
        change(document["state"])
        text = json.dumps(document["state"], separators=(",", ":"), ensure_ascii=False,
                          sort_keys=True)
        document["checksum"] = stable_hash(text)
        return json.dumps(document)

    def test_numbers_out_of_range_are_damage(self):
        with self.start() as instrument:
            sender = instrument.ids("senders")[0]
        good = self.file.read_text()
        self.assertEqual(json.loads(self.changed_state(lambda state: None)), json.loads(good),
                         "this test knows how the checksum is made")
        counter = ("counters", "self")
        port = ("senders", sender, "active", "legs", 0, "destination_port")
        sdp = ("senders", sender, "sdp_version")
        version = ("resources", sender, "version")
        cases = [
            (counter, -1, "0 to 254"), (counter, 255, "0 to 254"), (counter, 2 ** 40, "0 to 254"),
            (counter, 1e30, "0 to 254"), (counter, "1", "0 to 254"),
            (port, 0, "1 to 65535"), (port, -1, "1 to 65535"), (port, 65536, "1 to 65535"),
            (port, 1e30, "1 to 65535"), (port, 5004.5, "1 to 65535"), (port, None, "1 to 65535"),
            (sdp, -1, "0 to 9223372036854775807"), (sdp, 2 ** 63, "0 to 9223372036854775807"),
            (("senders", sender, "sdp_hash"), 1e30, "0 to 18446744073709551615"),
            (("resources", sender, "body_hash"), -1, "0 to 18446744073709551615"),
            (version, "281474976710655:0", f"at most {LAST_VERSION}"),
            (version, 7, f"at most {LAST_VERSION}"),
            (("senders", sender, "active", "legs"), [], "an array of 2"),
            (("senders", sender, "active", "legs"), {}, "an array of 2"),
            (("senders", sender, "staged", "master_enable"), 1, "true or false"),
            (("senders", sender, "staged", "peer_id"), "x" * 48, "a text of at most 47 bytes"),
            (("senders", sender, "staged", "peer_id"), "a\0", "a text of at most 47 bytes"),
            (("senders", sender, "staged", "peer_id"), [], "a text"),
            (("senders",), {f"x{i}": {} for i in range(7)}, "at most 6"),
            (("senders",), [], "an object"),
            (("receivers",), 0, "an object"),
        ]
        for place, value, allowed in cases:
            with self.subTest(place=place, value=value):
                def put(state):
                    for key in place[:-1]:
                        state = state[key]
                    state[place[-1]] = value
                self.file.write_text(good)
                self.file.write_text(self.changed_state(put))
                with self.start() as instrument:
                    where = "/state/" + "/".join(map(str, place)) + ": found "
                    line = next(line for line in instrument.wait_for_log("is damaged").splitlines()
                                if "is damaged" in line)
                    self.assertIn(where, line)
                    self.assertIn(allowed, line)

    def test_what_it_writes_at_the_limits_it_also_reads(self):
        with self.start() as instrument:
            senders, receivers = instrument.ids("senders"), instrument.ids("receivers")

        def to_the_limits(state):
            for entry in state["resources"].values():
                entry["version"] = LAST_VERSION
            for entry in state["senders"].values():
                entry["sdp_version"] = 2 ** 63 - 1
            for name in state["counters"]:
                state["counters"][name] = 254

        self.file.write_text(self.changed_state(to_the_limits))
        patch = {"transport_params": [{"destination_port": 7000}, {}], **IMMEDIATE}
        with self.start() as instrument:
            self.assertNotIn("damaged", instrument.log)
            for resource in [f"senders/{id}" for id in senders] + [f"receivers/{id}"
                                                                   for id in receivers]:
                self.assertEqual(instrument.patch(resource, patch).status, 200)
                self.assertEqual(instrument.node(resource)["version"], LAST_VERSION)
            self.assertIn(" 9223372036854775807 IN ", instrument.sdp(f"senders/{senders[0]}"))
        with self.start() as instrument:
            self.assertNotIn("damaged", instrument.log)
            self.assertIn("7000", instrument.sdp(f"senders/{senders[0]}"))


if __name__ == "__main__":
    unittest.main()
