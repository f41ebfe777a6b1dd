// SPDX-License-Identifier: Apache-2.0
//
// nmos-instrument: plain records in, NMOS texts out. This header includes all others; start here.
//
// The host application owns the network, the clock and the instrument. It keeps a few plain
// records up to date and asks five small classes for the texts that NMOS carries:
//
//   node_state.h          NMOS_IS04_ST        the node and its resources (AMWA IS-04)
//   connection_state.h    NMOS_IS05_ST        staged and active connections (AMWA IS-05)
//                         sdp_str             what an SDP file said
//   system_parameters.h   st_param_sys        the instrument's settings
//
//   NodeApi.h             NodeApi             IS-04 Node API response bodies
//   RegistrationApi.h     RegistrationApi     IS-04 Registration API request bodies
//   ConnectionApi.h       ConnectionApi       IS-05 bodies; SDP files written and checked
//   Nmos.h                Nmos                service file, settings document, membership rules
//   NetworkControlApi.h   NetworkControlApi   a class without operations
//
//   record_text.h         set_text ...        fields that are filled and never overrun
//   codes.h               the instrument's codes and positions by name; Selection
//   default_records.h     fill_default_records  records that are right as they come
//   record_check.h        check_record        tells what is wrong with a record
//                         check_records       ... and with all of them together
//   version.h             version             the version of the library
//
// In C the same is in nmos_instrument_c.h, with these records.
//
// Each of these headers except NetworkControlApi.h and version.h has an example. All together:
//
// ```cpp
// std::unique_ptr<NMOS_IS04_ST> node(new NMOS_IS04_ST()); // all zero
// std::strcpy(node->href, "http://192.0.2.10:3000/");
//
// const std::string self = NodeApi().make_self(node.get());
// assert(self.find("\"href\":\"http://192.0.2.10:3000/\"") != std::string::npos);
// assert(nmos_instrument::check_record(*node)[0] ==
//        "id is \"\", it must be a UUID in lower case"); // not ready for the network yet
// ```
//
// What holds for every operation:
//
// Ownership   Records belong to the caller. No operation keeps a pointer after it returns. Every
//             returned text is the caller's own.
// JSON        Compact (no space, no line break), members in ascending byte order of their keys.
//             Integral numbers below 2^53 print in full digits (minus zero prints "-0"), all
//             others with 17 significant digits. Bytes from 0x80 on are copied as they are; '"',
//             '\' and control bytes are escaped. A '/' is written "\/" or "/", as each operation
//             says. Intentional: the two are the same JSON value to every reader. Root listings, id
//             listings, constraints, SDP files and the service file are not serialised JSON but
//             fixed, hand-indented text.
// Records     A text field is read up to its first NUL byte and never past its array: a field
//             without NUL is its whole width. A flag byte is false when 0, true otherwise. A
//             negative count means no entries; one above its array's capacity means all of it.
// Exceptions  std::overflow_error with an empty text when a number in JSON would be NaN or
//             infinite. std::out_of_range when an index is outside its array: the text names the
//             operation, the index and the allowed range, and nothing has been read or written.
//             std::bad_alloc. An operation that does not write into its record has not changed it.
// Threads     Nothing is shared: operations may run in any number of threads at once, on records
//             that nobody writes at that time. The operations that write say so.
// Locale      Output and input never depend on the process's locale.

#ifndef NMOS_INSTRUMENT_NMOS_INSTRUMENT_H
#define NMOS_INSTRUMENT_NMOS_INSTRUMENT_H

#include "nmos_instrument/ConnectionApi.h"
#include "nmos_instrument/NetworkControlApi.h"
#include "nmos_instrument/Nmos.h"
#include "nmos_instrument/NodeApi.h"
#include "nmos_instrument/RegistrationApi.h"
#include "nmos_instrument/codes.h"
#include "nmos_instrument/connection_state.h"
#include "nmos_instrument/default_records.h"
#include "nmos_instrument/node_state.h"
#include "nmos_instrument/record_check.h"
#include "nmos_instrument/record_text.h"
#include "nmos_instrument/system_parameters.h"
#include "nmos_instrument/version.h"

#endif
