# SPDX-License-Identifier: Apache-2.0
# mypy: disable-error-code="empty-body"
"""The response bodies of the IS-04 v1.2 Node API: NodeApi.h says what each holds."""

from .node_state import NMOS_IS04_ST, SENDER_IS04_ST
from .operations import operation

__all__ = [
    "node_base",
    "node_deviceid",
    "node_devices",
    "node_flowid",
    "node_flows",
    "node_receiverid",
    "node_receiverid_target",
    "node_receivers",
    "node_self",
    "node_senderid",
    "node_senders",
    "node_sourceid",
    "node_sources",
    "node_version",
]


@operation
def node_version() -> str:
    """Listing of the API's versions."""


@operation
def node_base() -> str:
    """Listing of the API's resources."""


@operation
def node_self(node: NMOS_IS04_ST) -> str:
    """Body of "self": the node.

    OverflowError when the port of an endpoint is NaN or infinite.
    """


@operation
def node_sources(node: NMOS_IS04_ST) -> str:
    """Body of "sources"."""


@operation
def node_sourceid(node: NMOS_IS04_ST, index: int) -> str:
    """Body of "sources/{id}", index 0 to 3. Slashes are escaped."""


@operation
def node_flows(node: NMOS_IS04_ST) -> str:
    """Body of "flows". OverflowError when a number in it is NaN or infinite."""


@operation
def node_flowid(node: NMOS_IS04_ST, index: int) -> str:
    """Body of "flows/{id}", index 0 to 3."""


@operation
def node_devices(node: NMOS_IS04_ST, receiver_filter: int, audio_group_filter: int,
                 sender_filter: int) -> str:
    """Body of "devices". The selectors are those of NodeApi.h."""


@operation
def node_deviceid(node: NMOS_IS04_ST, index: int, receiver_filter: int, audio_group_filter: int,
                  sender_filter: int) -> str:
    """Body of "devices/{id}", index 0 to 3."""


@operation
def node_senders(node: NMOS_IS04_ST, all_senders: int) -> str:
    """Body of "senders": those that `all_senders` lets through."""


@operation
def node_senderid(node: NMOS_IS04_ST, index: int) -> str:
    """Body of "senders/{id}", index 0 to 5."""


@operation
def node_receivers(node: NMOS_IS04_ST, receiver_filter: int, audio_group_filter: int) -> str:
    """Body of "receivers": those that the selectors let through."""


@operation
def node_receiverid(node: NMOS_IS04_ST, index: int) -> str:
    """Body of "receivers/{id}", index 0 to 23."""


@operation
def node_receiverid_target(sender: SENDER_IS04_ST) -> str:
    """Body of "receivers/{id}/target", from one sender record."""
