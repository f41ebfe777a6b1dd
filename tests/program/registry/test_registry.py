# SPDX-License-Identifier: Apache-2.0
"""The registry for tests can be trusted: what it answers, what it notices, how it misbehaves."""

import http.client
import json
import pathlib
import socket
import ssl
import sys
import tempfile
import threading
import time
import unittest

sys.dont_write_bytecode = True
sys.path.append(str(pathlib.Path(__file__).resolve().parent.parent))

import amwa_schemas
from certificates import Certificates
from contents import Contents
from faults import Fault, Faults
from stand_in import ADDRESS, Registry, has_ipv6, wait_until

RESOURCE = "/x-nmos/registration/v1.2/resource"
HEALTH = "/x-nmos/registration/v1.2/health/nodes"


def uuid(number):
    return f"{number:08x}-0000-4000-8000-000000000000"


def core(number, **more):
    return {"id": uuid(number), "version": "10:5", "label": "", "description": "", "tags": {},
            **more}


NODE = core(1, href="http://192.0.2.1/", caps={}, services=[], clocks=[], interfaces=[],
            api={"versions": ["v1.2"], "endpoints": []})
DEVICE = core(2, type="urn:x-nmos:device:generic", node_id=uuid(1), senders=[], receivers=[],
              controls=[])
SOURCE = core(3, device_id=uuid(2), parents=[], caps={}, clock_name=None,
              format="urn:x-nmos:format:data")
FLOW = core(4, device_id=uuid(2), source_id=uuid(3), parents=[], format="urn:x-nmos:format:data",
            media_type="video/smpte291")
SENDER = core(5, device_id=uuid(2), flow_id=uuid(4), transport="urn:x-nmos:transport:rtp.mcast",
              manifest_href="http://192.0.2.1/sdp", interface_bindings=[],
              subscription={"receiver_id": None, "active": False})
RECEIVER = core(6, device_id=uuid(2), transport="urn:x-nmos:transport:rtp.mcast",
                interface_bindings=[], subscription={"sender_id": None, "active": False},
                format="urn:x-nmos:format:data", caps={"media_types": ["video/smpte291"]})
ALL = [("node", NODE), ("device", DEVICE), ("source", SOURCE), ("flow", FLOW), ("sender", SENDER),
       ("receiver", RECEIVER)]


def post(contents, kind, data):
    return contents.post(json.dumps({"type": kind, "data": data}))


class Rules(unittest.TestCase):
    def setUp(self):
        self.time = 1000.0
        self.contents = Contents(expiry=12.0, now=lambda: self.time)

    def violations(self):
        return [each["what"] for each in self.contents.violations]

    def fill(self):
        for kind, data in ALL:
            self.assertEqual(post(self.contents, kind, data).status, 201)

    def ids(self):
        return {kind: list(there) for kind, there in self.contents.listing().items() if there}

    def test_created_and_updated(self):
        self.fill()
        for kind, data in ALL:
            answer = post(self.contents, kind, data)
            self.assertEqual(answer.status, 200)
            self.assertEqual(answer.body, data)
        self.assertEqual(answer.headers, {
            "Location": "/x-nmos/registration/v1.2/resource/receivers/"
                        "00000006-0000-4000-8000-000000000000/"})
        self.assertEqual(self.violations(), [])
        self.assertEqual([each["event"] for each in self.contents.history],
                         ["created"] * 6 + ["updated"] * 6)

    def test_children_before_their_parents(self):
        for kind, data in ALL[1:]:
            answer = post(self.contents, kind, data)
            self.assertEqual(answer.status, 400)
            self.assertEqual(set(answer.body), {"code", "error", "debug"})
        self.assertEqual(self.violations(), [
            f"device {uuid(2)}: there is no node {uuid(1)}",
            f"source {uuid(3)}: there is no device {uuid(2)}",
            f"flow {uuid(4)}: there is no device {uuid(2)}",
            f"sender {uuid(5)}: there is no device {uuid(2)}",
            f"receiver {uuid(6)}: there is no device {uuid(2)}"])
        self.assertEqual(self.ids(), {})

    def test_a_flow_needs_its_source_and_a_sender_not_its_flow(self):
        for kind, data in ALL[:2]:
            post(self.contents, kind, data)
        self.assertEqual(post(self.contents, "flow", FLOW).status, 400)
        self.assertEqual(self.violations(), [f"flow {uuid(4)}: there is no source {uuid(3)}"])
        self.assertEqual(post(self.contents, "sender", SENDER).status, 201)

    def test_a_parent_of_another_kind(self):
        self.fill()
        self.assertEqual(post(self.contents, "source", {**SOURCE, "id": uuid(7),
                                                        "device_id": uuid(1)}).status, 400)
        self.assertEqual(self.violations(), [f"source {uuid(7)}: there is no device {uuid(1)}"])

    def test_an_id_of_another_kind_and_other_parents(self):
        self.fill()
        self.assertEqual(post(self.contents, "receiver", {**RECEIVER, "id": uuid(5)}).status, 400)
        self.assertEqual(post(self.contents, "device", {**DEVICE, "node_id": uuid(9)}).status, 400)
        self.assertEqual(self.violations(), [
            f"receiver {uuid(5)} is a sender here", f"device {uuid(2)} has other parents here"])

    def test_versions_never_go_back(self):
        self.fill()
        newer = {**RECEIVER, "version": "11:0", "label": "new"}
        self.assertEqual(post(self.contents, "receiver", newer).status, 200)
        self.assertEqual(post(self.contents, "receiver", RECEIVER).status, 400)
        # By number, not by text.
        self.assertEqual(post(self.contents, "receiver", {**newer, "version": "9:0"}).status, 400)
        self.assertEqual(self.violations(), [
            f"receiver {uuid(6)}: version 10:5 after 11:0",
            f"receiver {uuid(6)}: version 9:0 after 11:0"])
        self.assertEqual(self.contents.get("receiver", uuid(6)).body, newer)

    def test_versions_are_remembered_when_the_resource_is_gone(self):
        self.fill()
        self.contents.delete("node", uuid(1))
        self.assertEqual(post(self.contents, "node", {**NODE, "version": "10:4"}).status, 400)
        self.assertEqual(self.violations(), [f"node {uuid(1)}: version 10:4 after 10:5"])
        self.assertEqual(post(self.contents, "node", NODE).status, 201)

    def test_a_change_without_a_new_version(self):
        self.fill()
        self.assertEqual(post(self.contents, "receiver", {**RECEIVER, "label": "new"}).status, 200)
        self.assertEqual(self.violations(),
                         [f"receiver {uuid(6)}: changed, and still of version 10:5"])

    def test_a_deletion_takes_the_children_too(self):
        self.fill()
        self.assertEqual(self.contents.delete("source", uuid(3)).status, 204)
        self.assertEqual(self.ids(), {"nodes": [uuid(1)], "devices": [uuid(2)],
                                      "senders": [uuid(5)], "receivers": [uuid(6)]})
        self.assertEqual(self.contents.delete("source", uuid(3)).status, 404)
        # A flow is a child of two.
        self.fill_again()
        self.assertEqual(self.contents.delete("node", uuid(1)).status, 204)
        self.assertEqual(self.ids(), {})
        self.assertEqual(self.contents.heartbeat(uuid(1)).status, 404)

    def fill_again(self):
        for kind, data in ALL:
            self.assertIn(post(self.contents, kind, data).status, (200, 201))

    def test_only_what_it_is_is_deleted_and_shown(self):
        self.fill()
        self.assertEqual(self.contents.delete("flow", uuid(3)).status, 404)
        self.assertEqual(self.contents.get("flow", uuid(3)).status, 404)
        self.assertEqual(self.contents.get("source", uuid(3)).body, SOURCE)

    def test_a_node_without_heartbeats_goes(self):
        self.fill()
        for _ in range(2):
            self.time += 12.0
            self.assertEqual(self.contents.heartbeat(uuid(1)).status, 200)
        self.time += 12.1
        self.assertEqual(self.contents.heartbeat(uuid(1)).status, 404)
        self.assertEqual(self.ids(), {})
        self.assertEqual({each["event"] for each in self.contents.history[-6:]}, {"expired"})
        # It cannot know that its device is gone, so that is no violation.
        self.assertEqual(post(self.contents, "receiver", RECEIVER).status, 400)
        self.assertEqual(self.violations(), [])
        self.assertEqual(self.contents.heartbeats, {uuid(1): [1012.0, 1024.0]})

    def test_a_registry_that_was_restarted(self):
        """A node cannot know what it held before; but it knows what it deleted itself."""
        self.contents.restarted = True
        self.assertEqual(post(self.contents, "receiver", RECEIVER).status, 400)
        self.assertEqual(self.violations(), [])
        self.fill()
        self.contents.delete("device", uuid(2))
        self.assertEqual(post(self.contents, "receiver", RECEIVER).status, 400)
        self.assertEqual(self.violations(), [f"receiver {uuid(6)}: there is no device {uuid(2)}"])

    def test_an_update_is_not_a_heartbeat(self):
        self.fill()
        self.time += 11.0
        self.assertEqual(post(self.contents, "node", NODE).status, 200)
        self.time += 2.0
        self.assertEqual(self.contents.heartbeat(uuid(1)).status, 404)

    def test_bodies_that_are_none(self):
        for text, words in (
                ("{", "the body is not JSON: "), ("[]", "is not an object of data and type"),
                ('{"type": "node"}', "is not an object of data and type"),
                ('{"type": "nodes", "data": {}}', "type 'nodes' is none of node, device, "),
                ('{"type": "node", "data": []}', "node: data is not an object"),
                ('{"type": "node", "data": {"id": "1"}}', "node: id '1' is not a UUID"),
                ('{"type": "node", "data": {"id": "00000001-0000-4000-8000-000000000000"}}',
                 "node: version None is not <seconds>:<nanoseconds>")):
            with self.subTest(text):
                self.assertEqual(self.contents.post(text).status, 400)
                self.assertIn(words, self.violations()[-1])

    @unittest.skipIf(amwa_schemas.why_missing(), amwa_schemas.why_missing())
    def test_the_schemas(self):
        self.contents.schemas = amwa_schemas.Schemas(amwa_schemas.IS04)
        self.fill()
        del self.contents.history[:]
        answer = post(self.contents, "receiver", {**RECEIVER, "version": "10:6", "format": "x"})
        self.assertEqual(answer.status, 400)
        self.assertEqual(len(self.violations()), 1)
        answer = post(self.contents, "node", {**NODE, "href": 1})
        self.assertEqual((answer.status, self.violations()[-1]),
                         (400, "node: href: 1 is not of type 'string'"))
        self.assertEqual(self.contents.history, [])

    def test_faults(self):
        faults = Faults()
        self.assertIsNone(faults.take("POST nodes/1", 0))
        faults.add(Fault(request="POST nodes/.*", count=2, status=500))
        faults.add(Fault(request="POST .*", front=1, seconds=0.1, mode="half"))
        self.assertIsNone(faults.take("GET nodes/1", 0))
        self.assertIsNone(faults.take("POST node", 0))
        self.assertEqual([faults.take("POST nodes/1", 1).status for _ in range(3)],
                         [500, 500, None])
        time.sleep(0.11)
        self.assertIsNone(faults.take("POST nodes/1", 1))
        with self.assertRaises(ValueError):
            Fault(mode="quarter")
        with self.assertRaises(TypeError):
            Fault(statut=1)


class OverHttp(unittest.TestCase):
    def setUp(self):
        self.registry = Registry(fronts=2)
        self.addCleanup(self.registry.kill)

    def connect(self, front=0, timeout=5):
        connection = http.client.HTTPConnection(ADDRESS, self.registry.ports[front],
                                                timeout=timeout)
        self.addCleanup(connection.close)
        return connection

    def ask(self, method, path, body=None, headers=None, connection=None, front=0):
        connection = connection or self.connect(front)
        connection.request(method, path, body, headers or {})
        response = connection.getresponse()
        return response.status, dict(response.getheaders()), response.read()

    def post(self, kind, data, **more):
        return self.ask("POST", RESOURCE, json.dumps({"type": kind, "data": data}),
                        {"Content-Type": "application/json"}, **more)

    def test_the_life_of_a_node(self):
        connection = self.connect()
        status, headers, body = self.post("node", NODE, connection=connection)
        self.assertEqual((status, json.loads(body)), (201, NODE))
        self.assertEqual(headers, {
            "Content-Type": "application/json", "Content-Length": str(len(body)),
            "Location": "/x-nmos/registration/v1.2/resource/nodes/"
                        "00000001-0000-4000-8000-000000000000/"})
        status, _, body = self.ask("POST", f"{HEALTH}/{uuid(1)}", connection=connection)
        self.assertEqual((status, set(json.loads(body))), (200, {"health"}))
        self.assertRegex(json.loads(body)["health"], "^[0-9]+$")
        for path, answer in (("/x-nmos/registration/v1.2/", ["resource/", "health/"]),
                             (f"{RESOURCE}/nodes/{uuid(1)}", NODE)):
            self.assertEqual(json.loads(self.ask("GET", path, connection=connection)[2]), answer)
        self.assertEqual(self.ask("DELETE", f"{RESOURCE}/nodes/{uuid(1)}", connection=connection),
                         (204, {}, b""))
        status, _, body = self.ask("DELETE", f"{RESOURCE}/nodes/{uuid(1)}", connection=connection)
        self.assertEqual((status, json.loads(body)), (404, {
            "code": 404, "error": f"there is no node {uuid(1)}", "debug": None}))
        self.assertEqual(self.ask("POST", f"{HEALTH}/{uuid(1)}", connection=connection)[0], 404)
        self.assertEqual(self.registry.violations(), [])
        # All of it in one connection.
        self.assertEqual([(each["method"], each["target"], each["status"], each["connection"])
                          for each in self.registry.requests()], [
            ("POST", f"nodes/{uuid(1)}", 201, 0), ("POST", f"health/{uuid(1)}", 200, 0),
            ("GET", "/x-nmos/registration/v1.2/", 200, 0), ("GET", f"nodes/{uuid(1)}", 200, 0),
            ("DELETE", f"nodes/{uuid(1)}", 204, 0), ("DELETE", f"nodes/{uuid(1)}", 404, 0),
            ("POST", f"health/{uuid(1)}", 404, 0)])

    def test_two_front_ends_are_one_registry(self):
        self.post("node", NODE, front=0)
        self.assertEqual(self.ask("POST", f"{HEALTH}/{uuid(1)}", front=1)[0], 200)
        self.assertEqual([each["front"] for each in self.registry.requests()], [0, 1])
        self.assertEqual(len(self.registry.heartbeats()), 1)

    def test_what_is_no_heartbeat(self):
        self.post("node", NODE)
        health = f"{HEALTH}/{uuid(1)}"
        for body, headers in (("{}", {}), (None, {"Content-Type": "application/json"})):
            self.assertEqual(self.ask("POST", health, body, headers)[0], 400)
        self.assertEqual(self.ask("POST", health + "/")[0], 404)
        self.assertEqual(self.ask("DELETE", f"{RESOURCE}/nodes/{uuid(1)}", "{}")[0], 400)
        self.assertEqual(self.registry.violations(), [
            f"POST {health} with 2 bytes of body and Content-Type None",
            f"POST {health} with 0 bytes of body and Content-Type 'application/json'",
            f"POST {health}/ ends with a slash",
            f"DELETE {RESOURCE}/nodes/{uuid(1)} with 2 bytes of body and Content-Type None"])
        self.assertEqual(self.registry.heartbeats(), [])

    def test_what_is_not_in_the_registration_api(self):
        for method, path in (("PUT", RESOURCE), ("GET", "/"), ("POST", f"{RESOURCE}/nodes"),
                             ("DELETE", f"{RESOURCE}/node/{uuid(1)}"),
                             ("POST", f"{HEALTH}s/{uuid(1)}")):
            self.assertEqual(self.ask(method, path)[0], 404)
            self.assertEqual(self.registry.violations()[-1],
                             f"{method} {path} is not in the Registration API")

    def test_a_resource_without_its_content_type(self):
        status, _, _ = self.ask("POST", RESOURCE, json.dumps({"type": "node", "data": NODE}))
        self.assertEqual((status, self.registry.violations()),
                         (400, ["Content-Type None of a resource"]))

    def test_an_answer_that_a_test_asked_for(self):
        self.registry.behave(request="POST nodes/.*", status=500, count=1)
        status, _, body = self.post("node", NODE)
        self.assertEqual((status, json.loads(body)), (500, {
            "code": 500, "error": "as a test asked for", "debug": None}))
        self.assertEqual(self.registry.count(), 0)
        self.registry.behave(request="POST nodes/.*", status=307, body="there",
                             headers={"Location": "http://192.0.2.2/"}, count=1)
        status, headers, body = self.post("node", NODE)
        self.assertEqual((status, headers["Location"], body),
                         (307, "http://192.0.2.2/", b'"there"'))
        self.registry.behave(request="POST nodes/.*", status=500, processed=True)
        self.assertEqual(self.post("node", NODE)[0], 500)
        self.assertEqual(self.registry.count(), 1)
        self.registry.behave_well()
        self.assertEqual(self.post("node", NODE)[0], 200)
        self.assertEqual([each["status"] for each in self.registry.posts()], [500, 307, 500, 200])

    def test_a_slow_answer_is_the_right_one(self):
        self.registry.behave(delay=0.3)
        begin = time.monotonic()
        self.assertEqual(self.post("node", NODE)[0], 201)
        self.assertGreaterEqual(time.monotonic() - begin, 0.3)
        [request] = self.registry.requests()
        self.assertGreaterEqual(request["answered"] - request["time"], 0.3)

    def test_answers_that_are_none(self):
        for mode, error in (("garbage", http.client.BadStatusLine),
                            ("half", http.client.IncompleteRead),
                            ("drop", http.client.RemoteDisconnected),
                            ("stall", socket.timeout)):
            with self.subTest(mode):
                self.registry.behave(mode=mode, count=1)
                connection = self.connect(timeout=0.1)
                with self.assertRaises(error):
                    connection.request("POST", f"{HEALTH}/{uuid(1)}")
                    connection.getresponse().read()

    def test_right_answers_in_other_forms(self):
        self.registry.behave(mode="chunked", count=1)
        status, headers, body = self.post("node", NODE)
        self.assertEqual((status, headers["Transfer-Encoding"], json.loads(body)),
                         (201, "chunked", NODE))
        self.registry.behave(mode="chunked", count=1)
        self.assertEqual(self.ask("DELETE", f"{RESOURCE}/nodes/{uuid(1)}"), (204, {}, b""))
        self.registry.behave(mode="close", count=1)
        status, headers, _ = self.post("node", NODE)
        self.assertEqual((status, headers["Connection"]), (201, "close"))
        self.assertEqual(len(self.registry.posts()), 2)

    def test_other_addresses(self):
        for address, host in (("127.0.0.1", "localhost"), ("::1", "[::1]")):
            with self.subTest(host):
                if ":" in address and not has_ipv6():
                    continue
                with Registry(address=address, host=host) as registry:
                    self.assertEqual(registry.url, f"http://{host}:{registry.ports[0]}")
                    with socket.create_connection((address, registry.ports[0]), timeout=5):
                        pass

    def test_answers_that_never_end(self):
        for mode, length in (("trickle", 3), ("flood", 1_000_000)):
            with self.subTest(mode):
                self.registry.behave(mode=mode, count=1)
                connection = self.connect()
                connection.request("POST", f"{HEALTH}/{uuid(1)}")
                response = connection.getresponse()
                begin = time.monotonic()
                self.assertEqual(response.read(length), b" " * length)
                if mode == "trickle":
                    self.assertGreater(time.monotonic() - begin, 0.2)

    def test_a_front_end_that_is_closed(self):
        connection = self.connect()
        self.assertEqual(self.post("node", NODE, connection=connection)[0], 201)
        self.registry.front(0, "closed")
        self.assertEqual(connection.sock.recv(1), b"")
        with self.assertRaises(ConnectionRefusedError):
            self.connect().connect()
        self.assertEqual(self.ask("POST", f"{HEALTH}/{uuid(1)}", front=1)[0], 200)
        self.registry.front(0, "open")
        self.assertEqual(self.ask("POST", f"{HEALTH}/{uuid(1)}", front=0)[0], 200)

    def test_a_front_end_that_is_deaf(self):
        connection = self.connect()
        self.assertEqual(self.post("node", NODE, connection=connection)[0], 201)
        self.registry.front(0, "deaf")
        self.assertEqual(connection.sock.recv(1), b"")
        for _ in range(4):  # the first few reach the queue
            with self.assertRaises(socket.timeout):
                self.ask("POST", f"{HEALTH}/{uuid(1)}", connection=self.connect(timeout=0.3))
        self.registry.front(0, "open")
        self.assertEqual(self.ask("POST", f"{HEALTH}/{uuid(1)}")[0], 200)

    def test_killed_and_restarted(self):
        self.post("node", NODE)
        self.registry.kill()
        with self.assertRaises(ConnectionRefusedError):
            self.connect().connect()
        self.registry.start()
        self.assertEqual(self.registry.count(), 0)
        self.assertEqual(self.registry.requests(), [])
        self.assertEqual(self.post("node", NODE)[0], 201)

    def test_it_ends_with_its_test(self):
        self.registry.process.stdin.close()
        self.assertEqual(self.registry.process.wait(timeout=10), 0)

    def test_it_is_told_to_forget(self):
        self.post("node", NODE)
        self.post("device", DEVICE)
        self.registry.forget()
        self.assertEqual(self.registry.count(), 0)
        self.assertEqual(self.ask("POST", f"{HEALTH}/{uuid(1)}")[0], 404)
        self.assertEqual(self.post("receiver", RECEIVER)[0], 400)
        self.assertEqual(self.registry.violations(), [])

    def test_orders_that_it_does_not_know(self):
        for path, body in (("/behave", {"statut": 500}), ("/behave", {"mode": "quarter"}),
                           ("/front", {"front": 0, "state": "ajar"}),
                           ("/front", {"front": 2, "state": "open"}), ("/nothing", {})):
            with self.assertRaises(AssertionError):
                self.registry.ask("POST", path, body)

    def test_https(self):
        with tempfile.TemporaryDirectory() as folder:
            certificates = Certificates(folder, ADDRESS)
            with Registry(certificate=certificates.registry) as registry:
                self.assertRegex(registry.url, f"^https://{ADDRESS}:[0-9]+$")
                trusting = ssl.create_default_context(cafile=certificates.authority)
                for context, known in ((ssl.create_default_context(), False), (trusting, True)):
                    connection = http.client.HTTPSConnection(ADDRESS, registry.ports[0], timeout=5,
                                                             context=context)
                    if known:
                        connection.request("POST", f"{HEALTH}/{uuid(1)}")
                        self.assertEqual(connection.getresponse().status, 404)
                    else:
                        with self.assertRaises(ssl.SSLCertVerificationError):
                            connection.connect()
                    connection.close()

    def test_many_at_once(self):
        self.post("node", NODE)
        answers = []

        def beat():
            connection = self.connect()
            for _ in range(50):
                answers.append(self.ask("POST", f"{HEALTH}/{uuid(1)}", connection=connection)[0])

        threads = [threading.Thread(target=beat) for _ in range(4)]
        for each in threads:
            each.start()
        for each in threads:
            each.join()
        self.assertEqual(answers, [200] * 200)
        self.assertEqual(len(self.registry.heartbeats()), 200)

    def test_waiting(self):
        self.assertEqual(wait_until(lambda: 7, "seven"), 7)
        with self.assertRaisesRegex(AssertionError, "not within 0.1 s: a wonder"):
            wait_until(lambda: 0, "a wonder", limit=0.1)


if __name__ == "__main__":
    result = unittest.main(exit=False).result
    for _, reason in result.skipped:
        print("skipped:", reason)
    sys.exit(not result.wasSuccessful())
