# SPDX-License-Identifier: Apache-2.0
# mypy: disable-error-code="empty-body"
"""The advertisement, the settings document, which senders and receivers the node shows, and the
listings at the root of all APIs: Nmos.h says all."""

from .operations import AnyText, operation
from .records import Int32, Record, record
from .system_parameters import st_param_sys

__all__ = [
    "advertisement_init",
    "advertisement_node_service",
    "advertisement_node_service_text",
    "advertisement_update_txt_port_number",
    "advertisement_update_txt_protocol",
    "advertisement_update_txt_ver_dvc",
    "advertisement_update_txt_ver_flw",
    "advertisement_update_txt_ver_rcv",
    "advertisement_update_txt_ver_slf",
    "advertisement_update_txt_ver_snd",
    "advertisement_update_txt_ver_src",
    "api",
    "is_insert_node_receivers",
    "is_insert_node_senders",
    "nmos_advertisement",
    "param_json",
    "replace_all",
    "xnmos",
]


@record
class nmos_advertisement(Record):
    """The node's DNS-SD advertisement: the members of the class Nmos, with its defaults."""

    port: Int32
    protocol: Int32
    ver_slf: Int32
    ver_src: Int32
    ver_flw: Int32
    ver_dvc: Int32
    ver_snd: Int32
    ver_rcv: Int32

    def __init__(self) -> None:
        super().__init__()
        advertisement_init(self)


@operation
def replace_all(subject: AnyText, from_: str, to: str) -> str:
    """Copy of `subject` in which every `from_` is `to`."""


@operation
def xnmos() -> str:
    """Listing of the server's root."""


@operation
def api() -> str:
    """Listing of "x-nmos/"."""


@operation
def param_json(settings: st_param_sys) -> str:
    """The instrument's settings as one JSON object. Slashes are escaped."""


@operation
def is_insert_node_senders(all_senders: int, label_index: int) -> int:
    """Whether the node shows a sender: 1 yes, 0 no. `label_index` is 13 + its position."""


@operation
def is_insert_node_receivers(receiver_filter: int, audio_group_filter: int,
                             label_index: int) -> int:
    """Whether the node shows a receiver: 1 yes, 0 no. `label_index` is 17 + its position."""


@operation
def advertisement_init(advertisement: nmos_advertisement) -> None:
    """Sets the defaults: port 3000, all others 0."""


@operation
def advertisement_update_txt_port_number(advertisement: nmos_advertisement, port: int) -> None:
    """Stores `port`."""


@operation
def advertisement_update_txt_protocol(advertisement: nmos_advertisement, protocol: int) -> None:
    """Stores `protocol`: 0 "http", 1 "https"."""


@operation
def advertisement_update_txt_ver_slf(advertisement: nmos_advertisement) -> None:
    """Advances ver_slf."""


@operation
def advertisement_update_txt_ver_src(advertisement: nmos_advertisement) -> None:
    """Advances ver_src."""


@operation
def advertisement_update_txt_ver_flw(advertisement: nmos_advertisement) -> None:
    """Advances ver_flw."""


@operation
def advertisement_update_txt_ver_dvc(advertisement: nmos_advertisement) -> None:
    """Advances ver_dvc."""


@operation
def advertisement_update_txt_ver_snd(advertisement: nmos_advertisement) -> None:
    """Advances ver_snd."""


@operation
def advertisement_update_txt_ver_rcv(advertisement: nmos_advertisement) -> None:
    """Advances ver_rcv."""


@operation
def advertisement_node_service(advertisement: nmos_advertisement, enable: int) -> None:
    """Writes Avahi's service file, whose folder must exist; empties it unless `enable` is 1."""


@operation
def advertisement_node_service_text(advertisement: nmos_advertisement, enable: int) -> str:
    """The text that advertisement_node_service writes."""
