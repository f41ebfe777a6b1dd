# SPDX-License-Identifier: Apache-2.0
"""The page for browsers: who gets it, its files, and what it needs that NMOS does not have."""

import hashlib
import re
import socket
import unittest

from instrument import EXAMPLES, InstrumentTest

PAGE_FOLDER = EXAMPLES.parent.parent / "program" / "panel"
LISTING = b'[\n    "x-nmos/"\n]\n'
POLICY = ("default-src 'none'; script-src 'self'; style-src 'self'; connect-src 'self'; "
          "img-src 'self'; base-uri 'none'; form-action 'none'; frame-ancestors 'none'")
TYPES = {".html": "text/html; charset=utf-8", ".css": "text/css; charset=utf-8",
         ".js": "text/javascript; charset=utf-8", ".svg": "image/svg+xml"}
BROWSERS = (
    "text/html,application/xhtml+xml,application/xml;q=0.9,image/avif,image/webp,*/*;q=0.8",
    "text/html", "TEXT/HTML;q=0.1", "application/xhtml+xml")
OTHERS = ("*/*", "application/json", "text/*", "text/html;q=0", "", "text/event-stream",
          "application/json, text/plain, */*")


def page_files():
    """Those that belong to the page, by name."""
    return {path.name: path.read_bytes() for path in sorted(PAGE_FOLDER.iterdir())
            if path.suffix in TYPES}


class Page(InstrumentTest):
    def get(self, path, accept=None, **headers):
        if accept is not None:
            headers["Accept"] = accept
        return self.instrument.request("GET", path, headers={
            name.replace("_", "-"): value for name, value in headers.items()})

    def assert_page(self, answer):
        self.assertEqual(answer.status, 200)
        self.assertEqual(answer.body, page_files()["index.html"])
        self.assertEqual(answer.headers["content-type"], "text/html; charset=utf-8")
        self.assertEqual(answer.headers["content-security-policy"], POLICY)
        self.assertEqual(answer.headers["referrer-policy"], "no-referrer")
        self.assertEqual(answer.headers["cache-control"], "no-cache")
        self.assertEqual(answer.headers["x-content-type-options"], "nosniff")

    def test_browsers_get_it_at_the_root(self):
        for accept in BROWSERS:
            with self.subTest(accept):
                answer = self.get("/", accept)
                self.assert_page(answer)
                self.assertEqual(answer.headers["vary"], "Accept")

    def test_all_others_get_the_listing(self):
        for accept in (None, *OTHERS):
            with self.subTest(accept):
                answer = self.get("/", accept)
                self.assertEqual(answer.status, 200)
                self.assertEqual(answer.body, LISTING)
                self.assertEqual(answer.headers["content-type"], "application/json")
                self.assertEqual(answer.headers["vary"], "Accept")
                self.assertNotIn("etag", answer.headers)

    def test_the_lines_of_accept_are_one_list(self):
        connection = self.instrument.connect()
        connection.putrequest("GET", "/")
        connection.putheader("Accept", "application/json")
        connection.putheader("accept", "text/html")
        connection.endheaders()
        self.assertEqual(connection.getresponse().getheader("Content-Type"),
                         "text/html; charset=utf-8")
        connection.close()

    def test_other_paths_do_not_ask_who_reads(self):
        for path in ("/x-nmos", "/x-nmos/", "/status", "/x-nmos/node/v1.2/self"):
            answer = self.get(path, "text/html")
            self.assertEqual(answer.headers["content-type"], "application/json")
            self.assertNotIn("vary", answer.headers)

    def test_files(self):
        files = page_files()
        self.assertIn("index.html", files)
        etags = set()
        for name, content in files.items():
            with self.subTest(name):
                answer = self.get("/panel/" + name)
                self.assertEqual(answer.status, 200)
                self.assertEqual(answer.body, content)
                self.assertEqual(answer.headers["content-type"], TYPES[name[name.rindex("."):]])
                self.assertEqual(answer.headers["etag"],
                                 f'"{hashlib.sha256(content).hexdigest()}"')
                self.assertEqual(answer.headers["cache-control"], "no-cache")
                self.assertEqual(answer.headers["content-security-policy"], POLICY)
                self.assertEqual(answer.headers["access-control-allow-origin"], "*")
                etags.add(answer.headers["etag"])
        self.assertEqual(len(etags), len(files))
        self.assert_page(self.get("/panel/index.html"))

    def test_it_loads_nothing_but_its_own_files(self):
        # Only what is named as the program embeds it is there.
        text = page_files()["index.html"].decode("utf-8")
        named = re.findall(r'(?:src|href)="([^"#]+)"', text)
        self.assertNotEqual(named, [])
        for path in named:
            if path.startswith("/panel/"):
                self.assertEqual(self.get(path).status, 200, path)
            else:
                self.assertNotRegex(path, "^[a-z]+:|^//")

    def test_a_browser_that_has_a_file_does_not_get_it_again(self):
        for path, accept in (("/", "text/html"), ("/panel/index.html", None),
                             ("/panel/panel.css", None)):
            etag = self.get(path, accept).headers["etag"]
            for has in (etag, "W/" + etag, f'"other", {etag}', "*"):
                with self.subTest(f"{path} {has}"):
                    answer = self.get(path, accept, If_None_Match=has)
                    self.assertEqual((answer.status, answer.body), (304, b""))
                    self.assertEqual(answer.headers["etag"], etag)
                    self.assertEqual(answer.headers["cache-control"], "no-cache")
                    self.assertEqual(answer.headers.get("vary"), "Accept" if path == "/" else None)
                    self.assertNotIn("content-type", answer.headers)
            for has in ('"other"', etag[:-2] + '"', etag[1:-1], "", "nonsense"):
                self.assertEqual(self.get(path, accept, If_None_Match=has).status, 200, has)
        # The listing has no entity tag.
        self.assertEqual(self.get("/", If_None_Match="*").status, 200)

    def test_the_connection_goes_on_behind_a_304(self):
        connection = self.instrument.connect()
        for status, headers in ((304, {"If-None-Match": "*"}), (200, {}),
                                (304, {"If-None-Match": "*"})):
            connection.request("GET", "/panel/main.js", headers=headers)
            answer = connection.getresponse()
            self.assertEqual(answer.status, status)
            self.assertEqual(answer.read() == b"", status == 304)
        connection.close()

    def test_head(self):
        page = page_files()["index.html"]
        for path in ("/", "/panel/index.html"):
            answer = self.instrument.request("HEAD", path, headers={"Accept": "text/html"})
            self.assertEqual((answer.status, answer.body), (200, b""))
            self.assertEqual(answer.headers["content-length"], str(len(page)))
            self.assertEqual(answer.headers["content-type"], "text/html; charset=utf-8")
        self.assertEqual(self.instrument.request("HEAD", "/").headers["content-type"],
                         "application/json")

    def test_other_methods(self):
        for path in ("/", "/panel/panel.css", "/layout"):
            for method in ("POST", "PUT", "PATCH", "DELETE", "BREW"):
                answer = self.instrument.request(method, path, "x",
                                                 headers={"Accept": "text/html"})
                self.assert_error(answer, 405)
                self.assertEqual(answer.headers["allow"], "GET, HEAD, OPTIONS")
            answer = self.instrument.request("OPTIONS", path)
            self.assertEqual(answer.status, 200)
            self.assertEqual(answer.headers["access-control-allow-methods"], "GET, HEAD, OPTIONS")

    def test_other_paths(self):
        for path in ("/panel", "/panel/", "/panel/nothing.js", "/panel/../panel/panel.css",
                     "/panel/INDEX.HTML", "/panel/embed_files.cmake", "/panel/CMakeLists.txt",
                     "/panel//panel.css", "/panel/panel.h", "/index.html"):
            self.assert_error(self.get(path, "text/html"), 404)

    def test_metrics_count_them(self):
        def count(route, status):
            text = self.get("/metrics").text
            found = re.search(f'route="{re.escape(route)}",method="GET",status="{status}"}} (.*)',
                              text)
            return int(found.group(1)) if found else 0

        for path, route in (("/panel/panel.css", "/panel/panel.css"), ("/layout", "/layout")):
            before = count(route, 200)
            self.get(path)
            self.assertEqual(count(route, 200), before + 1)
        before = count("/panel/panel.css", 304)
        self.get("/panel/panel.css", If_None_Match="*")
        self.assertEqual(count("/panel/panel.css", 304), before + 1)

    def test_layout_lists_what_the_node_shows(self):
        layout = self.get("/layout").json
        for kind in ("senders", "receivers"):
            entries = [entry for stream in layout["streams"] for entry in stream[kind]]
            self.assertEqual({entry["id"]: entry["label"] for entry in entries},
                             {one["id"]: one["label"] for one in self.instrument.node(kind)})
            self.assertEqual({entry["hidden"] for entry in entries}, {None})
        self.assertEqual([one["address"] for one in layout["interfaces"]],
                         ["192.0.2.10", "198.51.100.10"])


class HiddenOnes(InstrumentTest):
    configuration = {"streams": {"senders": "stream 1", "sender_essences": "video only",
                                 "audio_groups": 2}}

    def test_layout_says_why(self):
        layout = self.instrument.get("/layout").json
        for kind in ("senders", "receivers"):
            entries = [entry for stream in layout["streams"] for entry in stream[kind]]
            self.assertEqual(len(entries), {"senders": 6, "receivers": 24}[kind])
            shown = {entry["id"] for entry in entries if entry["hidden"] is None}
            self.assertEqual(shown, set(self.instrument.ids(kind)))
            reasons = {entry["hidden"] for entry in entries} - {None}
            self.assertEqual(reasons, {
                "senders": {'streams.senders is "stream 1": of the video senders only that of '
                            "stream 1",
                            'streams.sender_essences is "video only": only senders of video'},
                "receivers": {"streams.audio_groups is 2: only groups G1 and G2"}}[kind])


class WithoutThePage(InstrumentTest):
    options = ("--no-panel",)

    def test_the_root_is_the_listing_for_everybody(self):
        for accept in BROWSERS + OTHERS:
            answer = self.instrument.request("GET", "/", headers={"Accept": accept})
            self.assertEqual(answer.body, LISTING)
            self.assertEqual(answer.headers["content-type"], "application/json")
            self.assertNotIn("vary", answer.headers)

    def test_its_files_are_not_there(self):
        for name in page_files():
            self.assert_error(self.instrument.get("/panel/" + name), 404)
        self.assertNotIn("/panel/", self.instrument.get("/metrics").text)

    def test_what_it_uses_is_there(self):
        self.assertEqual(self.instrument.get("/layout").status, 200)


class RawAnswers(InstrumentTest):
    def exchange(self, *lines):
        """The bytes of the answer to a request with these lines."""
        with socket.create_connection((self.instrument.host, self.instrument.port)) as client:
            client.settimeout(30)
            client.sendall("\r\n".join([*lines, "Connection: close", "", ""]).encode())
            answer = b""
            while piece := client.recv(65536):
                answer += piece
        return answer

    def test_a_304_has_no_body(self):
        head, _, body = self.exchange("GET /panel/main.js HTTP/1.1", "Host: x",
                                      "If-None-Match: *").partition(b"\r\n\r\n")
        self.assertTrue(head.startswith(b"HTTP/1.1 304 "), head)
        self.assertEqual(body, b"")

    def test_a_long_list_of_lines(self):
        lines = [f"Accept: application/x{i}" for i in range(50)]
        answer = self.exchange("GET / HTTP/1.1", "Host: x", *lines, "Accept: text/html")
        self.assertIn(b"text/html; charset=utf-8", answer)
        self.assertIn(page_files()["index.html"], answer)


