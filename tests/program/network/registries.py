# SPDX-License-Identifier: Apache-2.0
"""What the tests of an instrument have in common that registers with what it finds."""

from instrument import Instrument
from network import REGISTRY_ADDRESSES, NetworkTest, neighbour, wait_until
from registrations import BASE
from stand_in import Registry


class RegistriesTest(NetworkTest):
    """A neighbour announces registries, and a few of them run."""

    def setUp(self):
        super().setUp()
        neighbour.name_addresses({f"registry-{index}.local": one
                                  for index, one in enumerate(REGISTRY_ADDRESSES)})

    def start_daemons(self):
        self.start_bus()
        self.start_neighbour()
        return self.start_avahi()

    def registry(self, index=0):
        """At one of the addresses."""
        registry = Registry(address=REGISTRY_ADDRESSES[index])
        self.addCleanup(registry.kill)
        return registry

    def announce(self, registry, priority, versions="v1.0,v1.1,v1.2", **more):
        """By mDNS. The URL that it is found by."""
        index = REGISTRY_ADDRESSES.index(registry.address)
        neighbour.write_service(f"Registry {index}", "api_proto=http", f"api_ver={versions}",
                                f"pri={priority}", *(f"{key}={value}" for key, value in more.items()),
                                port=registry.ports[0], host=f"registry-{index}.local")
        return f"http://registry-{index}.local:{registry.ports[0]}{BASE}"

    def start(self, *options):
        instrument = Instrument("--listen", "media", *options, registries=[])
        self.addCleanup(instrument.end)
        return instrument

    def status(self, instrument):
        return instrument.status()["registration"]

    def wait_registered(self, instrument, url):
        def is_registered():
            status = self.status(instrument)
            return status["registered"] and status["registry"] == url

        wait_until(is_registered, lambda: f"{self.status(instrument)}\n{instrument.log}")
