// SPDX-License-Identifier: Apache-2.0
//
// The operations of nmos-instrument for C (C11) and for every language that can call C.
//
// The records are the ones of C++: node_state.h, connection_state.h and system_parameters.h. Each
// function here is one operation of the C++ classes, which have what it does, what it reads and
// what is intentional about it: nmos_node_receivers is NodeApi::make_receivers. nmos_instrument.h
// says what holds for all. Here stands what is different in C.
//
// ```c
// static NMOS_IS04_ST node; // all zero
// strcpy(node.href, "http://192.0.2.10:3000/");
//
// char text[4096];
// size_t length = nmos_node_self(&node, text, sizeof text);
// assert(length < sizeof text); // the whole text
// assert(strstr(text, "\"href\":\"http://192.0.2.10:3000/\"") != NULL);
//
// char small[9];
// assert(nmos_node_version(NULL, 0) == 16); // how long is it?
// assert(nmos_node_version(small, sizeof small) == 16 && strcmp(small, "[\n    \"v") == 0);
//
// length = nmos_node_receiverid(&node, 24, text, sizeof text);
// assert(length == NMOS_ERROR_INDEX && text[0] == '\0');
// assert(strcmp(nmos_error_text(length), "an index is outside its array") == 0);
// ```
//
// Texts       A function that makes a text writes it into the caller's `buffer` of `size` bytes as
//             snprintf does: at most `size` - 1 bytes, then a NUL. It returns the length of the
//             whole text without the NUL, so the text was cut if the result is `size` or more.
//             With `size` 0 nothing is written, and `buffer` may be null. Each call makes the text
//             anew. The longest are the lists of 24 receivers: some 10 KB.
// Errors      A result of NMOS_ERROR_FIRST or more is an error; the buffer then holds an empty
//             text. nmos_error_text says what the error is. No exception leaves a function, and a
//             null pointer is an error unless the argument is said to be optional.
// Arguments   Texts end with a NUL, except where a length follows: what may have come from a
//             network is taken with its NUL bytes. Selectors are those of NodeApi.h. What the C++
//             operation does not read is no argument here.
// Left out    NodeApi::init, ConnectionApi::init and NetworkControlApi, which do nothing.
// Threads     Nothing is shared and nothing is remembered between two calls: functions may run in
//             any number of threads at once, on records that nobody writes at that time. Those that
//             take a record without const write into it.

#ifndef NMOS_INSTRUMENT_C_H
#define NMOS_INSTRUMENT_C_H

#include <stddef.h>
#include <stdint.h>

#include "nmos_instrument/connection_state.h"
#include "nmos_instrument/export.h"
#include "nmos_instrument/node_state.h"
#include "nmos_instrument/system_parameters.h"

#ifdef __cplusplus
extern "C" {
#endif

/// @name Errors: results of functions that return size_t. No text is as long.
/// @{
#define NMOS_ERROR_FIRST (SIZE_MAX - 15)     ///< this and everything above is an error
#define NMOS_ERROR_NULL_POINTER (SIZE_MAX)   ///< a pointer that must not be null is null
#define NMOS_ERROR_INDEX (SIZE_MAX - 1)      ///< std::out_of_range of C++: an index
#define NMOS_ERROR_NOT_FINITE (SIZE_MAX - 2) ///< std::overflow_error of C++: a number
#define NMOS_ERROR_NO_MEMORY (SIZE_MAX - 3)  ///< std::bad_alloc of C++
#define NMOS_ERROR_INCOMPLETE (SIZE_MAX - 4) ///< std::out_of_range of C++: a text lacks a part
#define NMOS_ERROR_TOO_LONG (SIZE_MAX - 5)   ///< a text does not fit into nmos_sdp_found
#define NMOS_ERROR_INTERNAL (SIZE_MAX - 6)   ///< an error of the library itself
/// @}

/// nmos_instrument::version: the version of the library that runs, "1.0.0"; never null.
NMOS_INSTRUMENT_EXPORT const char* nmos_version(void);

/// What the error is, in a few words that may change between versions; never null. For a result
/// that is no error, "no error".
NMOS_INSTRUMENT_EXPORT const char* nmos_error_text(size_t result);

/// @name NodeApi
/// @{
NMOS_INSTRUMENT_EXPORT size_t nmos_node_version(char* buffer, size_t size);
NMOS_INSTRUMENT_EXPORT size_t nmos_node_base(char* buffer, size_t size);
NMOS_INSTRUMENT_EXPORT size_t nmos_node_self(const NMOS_IS04_ST* node, char* buffer, size_t size);
NMOS_INSTRUMENT_EXPORT size_t nmos_node_sources(const NMOS_IS04_ST* node, char* buffer,
                                                size_t size);
NMOS_INSTRUMENT_EXPORT size_t nmos_node_sourceid(const NMOS_IS04_ST* node, int index, char* buffer,
                                                 size_t size);
NMOS_INSTRUMENT_EXPORT size_t nmos_node_flows(const NMOS_IS04_ST* node, char* buffer, size_t size);
NMOS_INSTRUMENT_EXPORT size_t nmos_node_flowid(const NMOS_IS04_ST* node, int index, char* buffer,
                                               size_t size);
NMOS_INSTRUMENT_EXPORT size_t nmos_node_devices(const NMOS_IS04_ST* node, int receiver_filter,
                                                int audio_group_filter, int sender_filter,
                                                char* buffer, size_t size);
NMOS_INSTRUMENT_EXPORT size_t nmos_node_deviceid(const NMOS_IS04_ST* node, int index,
                                                 int receiver_filter, int audio_group_filter,
                                                 int sender_filter, char* buffer, size_t size);
NMOS_INSTRUMENT_EXPORT size_t nmos_node_senders(const NMOS_IS04_ST* node, int all_senders,
                                                char* buffer, size_t size);
NMOS_INSTRUMENT_EXPORT size_t nmos_node_senderid(const NMOS_IS04_ST* node, int index, char* buffer,
                                                 size_t size);
NMOS_INSTRUMENT_EXPORT size_t nmos_node_receivers(const NMOS_IS04_ST* node, int receiver_filter,
                                                  int audio_group_filter, char* buffer,
                                                  size_t size);
NMOS_INSTRUMENT_EXPORT size_t nmos_node_receiverid(const NMOS_IS04_ST* node, int index,
                                                   char* buffer, size_t size);
NMOS_INSTRUMENT_EXPORT size_t nmos_node_receiverid_target(const SENDER_IS04_ST* sender,
                                                          char* buffer, size_t size);
/// @}

/// @name RegistrationApi
/// @{
NMOS_INSTRUMENT_EXPORT size_t nmos_registration_version(char* buffer, size_t size);
NMOS_INSTRUMENT_EXPORT size_t nmos_registration_base(char* buffer, size_t size);
NMOS_INSTRUMENT_EXPORT size_t nmos_registration_health(char* buffer, size_t size);
/// Writes into the record, with `size` 0 too: it rewrites the versions first.
NMOS_INSTRUMENT_EXPORT size_t nmos_registration_resource_node(NMOS_IS04_ST* node, char* buffer,
                                                              size_t size);
NMOS_INSTRUMENT_EXPORT size_t nmos_registration_resource_devices(const NMOS_IS04_ST* node,
                                                                 int receiver_filter,
                                                                 int audio_group_filter,
                                                                 int sender_filter, char* buffer,
                                                                 size_t size);
NMOS_INSTRUMENT_EXPORT size_t nmos_registration_resource_deviceid(const NMOS_IS04_ST* node,
                                                                  int index, int receiver_filter,
                                                                  int audio_group_filter,
                                                                  int sender_filter, char* buffer,
                                                                  size_t size);
NMOS_INSTRUMENT_EXPORT size_t nmos_registration_resource_sources(const NMOS_IS04_ST* node,
                                                                 char* buffer, size_t size);
NMOS_INSTRUMENT_EXPORT size_t nmos_registration_resource_sourceid(const NMOS_IS04_ST* node,
                                                                  int index, char* buffer,
                                                                  size_t size);
NMOS_INSTRUMENT_EXPORT size_t nmos_registration_resource_flows(const NMOS_IS04_ST* node,
                                                               char* buffer, size_t size);
NMOS_INSTRUMENT_EXPORT size_t nmos_registration_resource_flowid(const NMOS_IS04_ST* node, int index,
                                                                char* buffer, size_t size);
NMOS_INSTRUMENT_EXPORT size_t nmos_registration_resource_senders(const NMOS_IS04_ST* node,
                                                                 char* buffer, size_t size);
NMOS_INSTRUMENT_EXPORT size_t nmos_registration_resource_senderid(const NMOS_IS04_ST* node,
                                                                  int index, char* buffer,
                                                                  size_t size);
NMOS_INSTRUMENT_EXPORT size_t nmos_registration_resource_receivers(const NMOS_IS04_ST* node,
                                                                   char* buffer, size_t size);
NMOS_INSTRUMENT_EXPORT size_t nmos_registration_resource_receiverid(const NMOS_IS04_ST* node,
                                                                    int index, char* buffer,
                                                                    size_t size);
/// Returns 0 or an error.
NMOS_INSTRUMENT_EXPORT size_t nmos_registration_update_version(NMOS_IS04_ST* node);
/// RegistrationApi::update_ipAddress. Returns 0 or an error.
NMOS_INSTRUMENT_EXPORT size_t nmos_registration_update_ip_address(NMOS_IS04_ST* node,
                                                                  const char* ip, const char* port);
/// @}

/// @name ConnectionApi
/// @{
NMOS_INSTRUMENT_EXPORT size_t nmos_connection_version(char* buffer, size_t size);
NMOS_INSTRUMENT_EXPORT size_t nmos_connection_base(char* buffer, size_t size);
NMOS_INSTRUMENT_EXPORT size_t nmos_connection_bulk(char* buffer, size_t size);
NMOS_INSTRUMENT_EXPORT size_t nmos_connection_bulk_senders(char* buffer, size_t size);
NMOS_INSTRUMENT_EXPORT size_t nmos_connection_bulk_receivers(char* buffer, size_t size);
NMOS_INSTRUMENT_EXPORT size_t nmos_connection_single(char* buffer, size_t size);
NMOS_INSTRUMENT_EXPORT size_t nmos_connection_single_senderid(char* buffer, size_t size);
NMOS_INSTRUMENT_EXPORT size_t nmos_connection_single_receiverid(char* buffer, size_t size);
/// `all_senders` is `all` of ConnectionApi::make_single_senders.
NMOS_INSTRUMENT_EXPORT size_t nmos_connection_single_senders(const NMOS_IS04_ST* node,
                                                             int all_senders, char* buffer,
                                                             size_t size);
NMOS_INSTRUMENT_EXPORT size_t nmos_connection_single_receivers(const NMOS_IS04_ST* node,
                                                               int receiver_filter,
                                                               int audio_group_filter, char* buffer,
                                                               size_t size);
NMOS_INSTRUMENT_EXPORT size_t nmos_connection_single_senderid_constraints(const char* leg1_source,
                                                                          const char* leg2_source,
                                                                          char* buffer,
                                                                          size_t size);
NMOS_INSTRUMENT_EXPORT size_t nmos_connection_single_receiverid_constraints(
    const char* leg1_interface, const char* leg2_interface, char* buffer, size_t size);
/// As in C++, an index that is too high for the record cannot be noticed: how many receivers it
/// holds is decided by the host's build.
NMOS_INSTRUMENT_EXPORT size_t nmos_connection_single_receiverid_staged(
    const NMOS_IS05_ST* connections, int index, char* buffer, size_t size);
/// The index as in nmos_connection_single_receiverid_staged.
NMOS_INSTRUMENT_EXPORT size_t nmos_connection_single_receiverid_active(
    const NMOS_IS05_ST* connections, int index, char* buffer, size_t size);
NMOS_INSTRUMENT_EXPORT size_t nmos_connection_single_senderid_staged(
    const NMOS_IS05_ST* connections, int index, char* buffer, size_t size);
NMOS_INSTRUMENT_EXPORT size_t nmos_connection_single_senderid_active(
    const NMOS_IS05_ST* connections, int index, char* buffer, size_t size);
NMOS_INSTRUMENT_EXPORT size_t nmos_connection_single_senderid_sdp(const NMOS_IS05_ST* connections,
                                                                  int index,
                                                                  const st_param_sys* settings,
                                                                  char* buffer, size_t size);

/// What an SDP file said: sdp_str of C++ with texts of fixed size. Every text ends with a NUL.
typedef struct nmos_sdp_found
{
    uint32_t found_flags; ///< bits of sdp_found_flag
    int32_t status;       ///< 200, or 400 when there is a problem
    /// The number that begins sdp_str's text, which goes on to the end of its line; 0 if none
    int32_t rtp_payload_type;
    uint8_t size_interlaced;
    uint8_t rate_interlaced;
    uint8_t reserved[2]; ///< zero; keeps the layout
    char source_ip[2][64];
    char multicast_ip[2][64];
    char destination_port[2][64];
    char sampling[64];
    char depth[64];
    char width[64];
    char height[64];
    char exactframerate[64];
    char colorimetry[64];
    char packing_mode[64];
    char tcs[64];
} nmos_sdp_found;

/// ConnectionApi::analyze_sdp_file. The messages go into `errors` of `errors_size` bytes; the
/// result is their length, 0 when the file is accepted. `found` is cleared first, so a text that
/// the file does not say is empty.
///
/// NMOS_ERROR_INCOMPLETE where C++ throws std::out_of_range: `errors` and `found` hold what was
/// found so far, `status` is 400. NMOS_ERROR_TOO_LONG when the file was read, but a text of it does
/// not fit into its field; that one is empty and all others are stored, `errors` too.
NMOS_INSTRUMENT_EXPORT size_t nmos_connection_analyze_sdp_file(
    const char* sdp, size_t sdp_length, int switch_capable, short current_format,
    int switch_allowed, nmos_sdp_found* found, char* errors, size_t errors_size);

/// ConnectionApi::convertCRLF.
NMOS_INSTRUMENT_EXPORT size_t nmos_connection_convert_crlf(const char* text, size_t length,
                                                           const char* newline, char* buffer,
                                                           size_t size);

/// ConnectionApi::split_string. The text of the result is what the table would hold from its first
/// entry on, a NUL between two entries: `*count` pieces and, if the table has room for it, the
/// number that follows.
NMOS_INSTRUMENT_EXPORT size_t nmos_connection_split_string(const char* text, size_t length,
                                                           const char* delimiter, int max_parts,
                                                           int* count, char* buffer, size_t size);

/// ConnectionApi::make_fullpath_from_request. NMOS_ERROR_INCOMPLETE when there is no "/".
NMOS_INSTRUMENT_EXPORT size_t nmos_connection_fullpath_from_request(const char* request_line,
                                                                    size_t length, char* buffer,
                                                                    size_t size);
/// @}

/// @name Nmos
/// @{

/// Nmos::replaceAll; `subject` stays as it is.
NMOS_INSTRUMENT_EXPORT size_t nmos_replace_all(const char* subject, size_t length, const char* from,
                                               const char* to, char* buffer, size_t size);
NMOS_INSTRUMENT_EXPORT size_t nmos_xnmos(char* buffer, size_t size);
NMOS_INSTRUMENT_EXPORT size_t nmos_api(char* buffer, size_t size);
NMOS_INSTRUMENT_EXPORT size_t nmos_param_json(const st_param_sys* settings, char* buffer,
                                              size_t size);
/// 1 or 0.
NMOS_INSTRUMENT_EXPORT int nmos_is_insert_node_senders(int all_senders, int label_index);
/// 1 or 0.
NMOS_INSTRUMENT_EXPORT int nmos_is_insert_node_receivers(int receiver_filter,
                                                         int audio_group_filter, int label_index);

/// The members of Nmos: the node's DNS-SD advertisement. A host may read and write them.
typedef struct nmos_advertisement
{
    int32_t port;
    int32_t protocol;
    int32_t ver_slf;
    int32_t ver_src;
    int32_t ver_flw;
    int32_t ver_dvc;
    int32_t ver_snd;
    int32_t ver_rcv;
} nmos_advertisement;

/// The defaults that the constructor Nmos::Nmos sets: port 3000, all others 0. This and the
/// functions below return 0 or an error, except nmos_advertisement_node_service_text.
NMOS_INSTRUMENT_EXPORT size_t nmos_advertisement_init(nmos_advertisement* advertisement);
NMOS_INSTRUMENT_EXPORT size_t
nmos_advertisement_update_txt_port_number(nmos_advertisement* advertisement, int port);
NMOS_INSTRUMENT_EXPORT size_t
nmos_advertisement_update_txt_protocol(nmos_advertisement* advertisement, int protocol);
NMOS_INSTRUMENT_EXPORT size_t
nmos_advertisement_update_txt_ver_slf(nmos_advertisement* advertisement);
NMOS_INSTRUMENT_EXPORT size_t
nmos_advertisement_update_txt_ver_src(nmos_advertisement* advertisement);
NMOS_INSTRUMENT_EXPORT size_t
nmos_advertisement_update_txt_ver_flw(nmos_advertisement* advertisement);
NMOS_INSTRUMENT_EXPORT size_t
nmos_advertisement_update_txt_ver_dvc(nmos_advertisement* advertisement);
NMOS_INSTRUMENT_EXPORT size_t
nmos_advertisement_update_txt_ver_snd(nmos_advertisement* advertisement);
NMOS_INSTRUMENT_EXPORT size_t
nmos_advertisement_update_txt_ver_rcv(nmos_advertisement* advertisement);
/// Nmos::make_node_service: writes Avahi's service file.
NMOS_INSTRUMENT_EXPORT size_t
nmos_advertisement_node_service(const nmos_advertisement* advertisement, int enable);
NMOS_INSTRUMENT_EXPORT size_t nmos_advertisement_node_service_text(
    const nmos_advertisement* advertisement, int enable, char* buffer, size_t size);
/// @}

/// @name check_record and check_records
/// What is wrong with a record, one finding a line, each ended by a line feed; 0 when nothing is.
/// @{
NMOS_INSTRUMENT_EXPORT size_t nmos_check_node(const NMOS_IS04_ST* node, char* buffer, size_t size);
NMOS_INSTRUMENT_EXPORT size_t nmos_check_connections(const NMOS_IS05_ST* connections, char* buffer,
                                                     size_t size);
NMOS_INSTRUMENT_EXPORT size_t nmos_check_settings(const st_param_sys* settings, char* buffer,
                                                  size_t size);
/// nmos_instrument::check_records; the last three arguments are the members of Selection.
NMOS_INSTRUMENT_EXPORT size_t nmos_check_records(const NMOS_IS04_ST* node,
                                                 const NMOS_IS05_ST* connections,
                                                 const st_param_sys* settings, int receiver_filter,
                                                 int audio_group_filter, int sender_filter,
                                                 char* buffer, size_t size);
/// @}

#ifdef __cplusplus
}
#endif

#endif
