# SPDX-License-Identifier: Apache-2.0
# mypy: disable-error-code="empty-body"
"""Tells what is wrong with a record before it reaches the network: record_check.h has the rules."""

from .connection_state import NMOS_IS05_ST
from .node_state import NMOS_IS04_ST
from .operations import operation
from .system_parameters import st_param_sys

__all__ = [
    "check_connections",
    "check_node",
    "check_records",
    "check_settings",
]


@operation
def check_node(node: NMOS_IS04_ST) -> list[str]:
    """What is wrong with the node, a line for each finding; empty when nothing is."""


@operation
def check_connections(connections: NMOS_IS05_ST) -> list[str]:
    """What is wrong with the connections."""


@operation
def check_settings(settings: st_param_sys) -> list[str]:
    """What is wrong with the settings."""


@operation
def check_records(node: NMOS_IS04_ST, connections: NMOS_IS05_ST, settings: st_param_sys,
                  receiver_filter: int, audio_group_filter: int, sender_filter: int) -> list[str]:
    """What is wrong across the records of one instrument, which the selectors narrow."""
