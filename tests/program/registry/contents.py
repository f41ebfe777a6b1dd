# SPDX-License-Identifier: Apache-2.0
"""What a registry holds, and the rules that it keeps (IS-04 v1.2, Behaviour: Registration)."""

import json
import re
import threading
import time

BASE = "/x-nmos/registration/v1.2"

# Each kind, and the members that name its parents; parents come first.
PARENTS = {
    "node": {},
    "device": {"node_id": "node"},
    "source": {"device_id": "device"},
    "flow": {"device_id": "device", "source_id": "source"},
    "sender": {"device_id": "device"},
    "receiver": {"device_id": "device"},
}
UUID = re.compile(r"[0-9a-f]{8}-[0-9a-f]{4}-[1-5][0-9a-f]{3}-[89ab][0-9a-f]{3}-[0-9a-f]{12}")


class Answer:
    def __init__(self, status, body=None, headers=None):
        """`body` is JSON; None is no body."""
        self.status = status
        self.body = body
        self.headers = headers or {}


def refusal(status, error, debug=None):
    return Answer(status, {"code": status, "error": error, "debug": debug})


class Resource:
    def __init__(self, kind, data):
        self.kind = kind
        self.data = data

    @property
    def id(self):
        return self.data["id"]

    @property
    def version(self):
        seconds, nanoseconds = self.data["version"].split(":")
        return int(seconds), int(nanoseconds)

    def parents(self):
        return {self.data.get(member): kind for member, kind in PARENTS[self.kind].items()}


class Contents:
    """Any thread may call it. A node without a heartbeat for `expiry` seconds goes, and all that
    belongs to it."""

    def __init__(self, expiry=12.0, restarted=False, schemas=None, now=time.monotonic):
        """`restarted`: it may have held more before."""
        self.expiry = expiry
        self.restarted = restarted
        self.schemas = schemas
        self.now = now
        self.lock = threading.RLock()
        self.resources = {}   # by id
        self.latest = {}      # by id, of all that were ever here: versions never go back
        self.gone = set()     # ids that the registry removed of its own accord
        self.heard = {}       # node id: when it was created or its last heartbeat came
        self.heartbeats = {}  # node id: the times of all heartbeats that were accepted
        self.history = []     # what came and went
        self.violations = []  # what a node must never do

    def violation(self, what):
        with self.lock:
            self.violations.append({"time": self.now(), "what": what})

    def note(self, event, resource):
        self.history.append({"time": self.now(), "event": event, "kind": resource.kind,
                             "id": resource.id})

    def refuse_violation(self, error):
        self.violation(error)
        return refusal(400, error)

    # What a node may ask.

    def post(self, text):
        with self.lock:
            self.expire()
            try:
                envelope = json.loads(text)
            except ValueError as error:
                return self.refuse_violation(f"the body is not JSON: {error}")
            if not isinstance(envelope, dict) or set(envelope) != {"data", "type"}:
                return self.refuse_violation("the body is not an object of data and type")
            if envelope["type"] not in PARENTS:
                return self.refuse_violation(f"type {envelope['type']!r} is none of "
                                             + ", ".join(PARENTS))
            fault = self.fault_of_form(envelope)
            if fault:
                return self.refuse_violation(f"{envelope['type']}: {fault}")
            return self.store(Resource(envelope["type"], envelope["data"]))

    def fault_of_form(self, envelope):
        data = envelope["data"]
        if not isinstance(data, dict):
            return "data is not an object"
        if not UUID.fullmatch(str(data.get("id"))):
            return f"id {data.get('id')!r} is not a UUID"
        if not re.fullmatch("[0-9]+:[0-9]+", str(data.get("version"))):
            return f"version {data.get('version')!r} is not <seconds>:<nanoseconds>"
        if self.schemas:
            # The envelope's schema only says that none of the kinds fits.
            return "; ".join(
                self.schemas.errors(envelope["type"] + ".json", data)
                or self.schemas.errors("registrationapi-resource-post-request.json", envelope))
        return ""

    def store(self, resource):
        known = self.resources.get(resource.id)
        if known and known.kind != resource.kind:
            return self.refuse_violation(f"{resource.kind} {resource.id} is a {known.kind} here")
        if known and known.parents() != resource.parents():
            return self.refuse_violation(f"{resource.kind} {resource.id} has other parents here")
        for parent, kind in resource.parents().items():
            if parent in self.resources and self.resources[parent].kind == kind:
                continue
            missing = f"{resource.kind} {resource.id}: there is no {kind} {parent}"
            # A node cannot know what the registry has lost.
            lost = parent in self.gone or (self.restarted and parent not in self.latest)
            return refusal(400, missing) if lost else self.refuse_violation(missing)
        latest = self.latest.get(resource.id)
        if latest and resource.version < latest.version:
            return self.refuse_violation(
                f"{resource.kind} {resource.id}: version {resource.data['version']} after "
                f"{latest.data['version']}")
        if latest and resource.version == latest.version and resource.data != latest.data:
            self.violation(f"{resource.kind} {resource.id}: changed, and still of version "
                           f"{resource.data['version']}")
        self.latest[resource.id] = self.resources[resource.id] = resource
        self.gone.discard(resource.id)
        if resource.kind == "node" and not known:
            self.heard[resource.id] = self.now()
        self.note("updated" if known else "created", resource)
        location = f"{BASE}/resource/{resource.kind}s/{resource.id}/"
        return Answer(200 if known else 201, resource.data, {"Location": location})

    def find(self, kind, id):
        resource = self.resources.get(id)
        return resource if resource and resource.kind == kind else None

    def delete(self, kind, id):
        with self.lock:
            self.expire()
            resource = self.find(kind, id)
            if not resource:
                return refusal(404, f"there is no {kind} {id}")
            self.remove(resource, "deleted")
            return Answer(204)

    def get(self, kind, id):
        with self.lock:
            self.expire()
            resource = self.find(kind, id)
            return Answer(200, resource.data) if resource else refusal(
                404, f"there is no {kind} {id}")

    def heartbeat(self, id):
        with self.lock:
            self.expire()
            if id not in self.heard:
                return refusal(404, f"there is no node {id}")
            self.heard[id] = self.now()
            self.heartbeats.setdefault(id, []).append(self.heard[id])
            return self.health(id)

    def health(self, id):
        with self.lock:
            self.expire()
            if id not in self.heard:
                return refusal(404, f"there is no node {id}")
            age = self.now() - self.heard[id]
            return Answer(200, {"health": str(int(time.time() - age))})

    # What goes.

    def remove(self, resource, event):
        for child in [child for child in self.resources.values()
                      if resource.id in child.parents()]:
            if child.id in self.resources:
                self.remove(child, event)
        del self.resources[resource.id]
        self.heard.pop(resource.id, None)
        if event == "expired":
            self.gone.add(resource.id)
        self.note(event, resource)

    def expire(self):
        with self.lock:
            late = [id for id, heard in self.heard.items() if self.now() - heard > self.expiry]
            for id in late:
                self.remove(self.resources[id], "expired")

    # What a test may ask.

    def forget(self):
        """All nodes, as if their time were over."""
        with self.lock:
            for id in list(self.heard):
                self.remove(self.resources[id], "expired")

    def count(self):
        with self.lock:
            self.expire()
            return len(self.resources)

    def listing(self):
        """{"nodes": {id: data}, "devices": ...}"""
        with self.lock:
            self.expire()
            return {kind + "s": {id: each.data for id, each in self.resources.items()
                                 if each.kind == kind} for kind in PARENTS}
