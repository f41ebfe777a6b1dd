# SPDX-License-Identifier: Apache-2.0
"""The registration while the network changes."""

import unittest

from namespace import run_in_namespace


class Network(unittest.TestCase):
    def run_it(self):
        """The test of the same name in registration_in_namespace.py."""
        run_in_namespace(self, f"registration_in_namespace.Network.{self._testMethodName}")

    test_another_address_of_the_instrument = run_it
    test_unplugged_for_a_while = run_it
    test_unplugged_for_longer_than_the_registry_waits = run_it
    test_unplugged_at_the_end = run_it


if __name__ == "__main__":
    unittest.main()
