# SPDX-License-Identifier: Apache-2.0
# mypy: disable-error-code="empty-body"
"""The request bodies of the IS-04 v1.2 Registration API: RegistrationApi.h says what each holds."""

from .node_state import NMOS_IS04_ST
from .operations import operation

__all__ = [
    "registration_base",
    "registration_health",
    "registration_resource_deviceid",
    "registration_resource_devices",
    "registration_resource_flowid",
    "registration_resource_flows",
    "registration_resource_node",
    "registration_resource_receiverid",
    "registration_resource_receivers",
    "registration_resource_senderid",
    "registration_resource_senders",
    "registration_resource_sourceid",
    "registration_resource_sources",
    "registration_update_ip_address",
    "registration_update_version",
    "registration_version",
]


@operation
def registration_version() -> str:
    """Listing of the API's versions."""


@operation
def registration_base() -> str:
    """Listing of the API's resources."""


@operation
def registration_health() -> str:
    """Body of the heartbeat: empty."""


@operation
def registration_resource_node(node: NMOS_IS04_ST) -> str:
    """Registration of the node. Writes the versions of the record first."""


@operation
def registration_resource_devices(node: NMOS_IS04_ST, receiver_filter: int, audio_group_filter:
                                  int, sender_filter: int) -> str:
    """Array of the devices; not for posting."""


@operation
def registration_resource_deviceid(node: NMOS_IS04_ST, index: int, receiver_filter: int,
                                   audio_group_filter: int, sender_filter: int) -> str:
    """Registration of a device, index 0 to 3."""


@operation
def registration_resource_sources(node: NMOS_IS04_ST) -> str:
    """Array of registrations. Slashes are escaped."""


@operation
def registration_resource_sourceid(node: NMOS_IS04_ST, index: int) -> str:
    """Registration of a source, index 0 to 3. Slashes are escaped."""


@operation
def registration_resource_flows(node: NMOS_IS04_ST) -> str:
    """Array of registrations. Slashes are escaped."""


@operation
def registration_resource_flowid(node: NMOS_IS04_ST, index: int) -> str:
    """Registration of a flow, index 0 to 3. Slashes are escaped."""


@operation
def registration_resource_senders(node: NMOS_IS04_ST) -> str:
    """Array of registrations."""


@operation
def registration_resource_senderid(node: NMOS_IS04_ST, index: int) -> str:
    """Registration of a sender, index 0 to 5."""


@operation
def registration_resource_receivers(node: NMOS_IS04_ST) -> str:
    """Array of registrations."""


@operation
def registration_resource_receiverid(node: NMOS_IS04_ST, index: int) -> str:
    """Registration of a receiver, index 0 to 23."""


@operation
def registration_update_version(node: NMOS_IS04_ST) -> None:
    """Writes the record's time into the versions of node, devices and receivers."""


@operation
def registration_update_ip_address(node: NMOS_IS04_ST, ip: str, port: str) -> None:
    """Writes a part of another address into the record: see RegistrationApi::update_ipAddress."""
