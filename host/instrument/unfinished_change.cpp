// SPDX-License-Identifier: Apache-2.0

#include "instrument/unfinished_change.h"

namespace nmos_instrument::host {

UnfinishedChange::UnfinishedChange(Records& records, Nmos& counters, const ConnectionKey& key)
    : connection_(key.side == Side::sender ? records.connections.senders[key.index]
                                           : records.connections.receivers[key.index]),
      version_(key.side == Side::sender ? records.node.senders[key.index].version
                                        : records.node.receivers[key.index].version),
      subscription_(key.side == Side::sender ? records.node.senders[key.index].subscription[0]
                                             : records.node.receivers[key.index].subscription[0]),
      node_seconds_(records.node.version_seconds),
      node_nanoseconds_(records.node.version_nanoseconds),
      sdp_sessions_(records.sdp_sessions),
      counter_(key.side == Side::sender ? counters.ver_snd : counters.ver_rcv)
{}

void UnfinishedChange::finish()
{
    connection_.let_be();
    version_.let_be();
    subscription_.let_be();
    node_seconds_.let_be();
    node_nanoseconds_.let_be();
    sdp_sessions_.let_be();
    counter_.let_be();
}

} // namespace nmos_instrument::host
