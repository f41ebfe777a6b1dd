# SPDX-License-Identifier: Apache-2.0
#
# What makes an error in our own memory hard to use, wherever the compiler and the linker have it.
# Only our own targets get it: a project that takes the library in by add_subdirectory decides about
# its own.
include(CheckCXXCompilerFlag)
include(CheckLinkerFlag)
include(CheckCXXSourceCompiles)
include(CheckPIESupported)

check_pie_supported(LANGUAGES CXX)

check_cxx_compiler_flag(-fstack-protector-strong NMOS_INSTRUMENT_HAS_STACK_PROTECTOR)
check_cxx_compiler_flag(-fno-plt NMOS_INSTRUMENT_HAS_NO_PLT)
check_linker_flag(CXX LINKER:-z,relro,-z,now NMOS_INSTRUMENT_HAS_FULL_RELRO)

# Distributions let their compilers define it themselves, some as 3, and only when they optimise.
set(CMAKE_REQUIRED_FLAGS -O2)
check_cxx_source_compiles("
  #ifdef _FORTIFY_SOURCE
  #error it is defined already
  #endif
  int main() {}" NMOS_INSTRUMENT_FORTIFY_SOURCE_IS_FREE)
unset(CMAKE_REQUIRED_FLAGS)

# The functions of the C library that check for overflow need the optimiser, and the sanitizers
# watch the unchecked ones.
set(nmos_instrument_fortify OFF)
if(NMOS_INSTRUMENT_FORTIFY_SOURCE_IS_FREE AND NOT CMAKE_CXX_FLAGS MATCHES "-fsanitize")
  set(nmos_instrument_fortify ON)
endif()

# Before main() all addresses of functions in other libraries are filled in, then locked.
function(lock_addresses_at_start target)
  if(NMOS_INSTRUMENT_HAS_FULL_RELRO)
    target_link_options(${target} PRIVATE LINKER:-z,relro,-z,now)
  endif()
endfunction()

# With locked addresses nothing is looked up at the first call any more. On 32-bit x86 calls without
# the table for that take 4 KB less; elsewhere they save nothing, and on 64-bit x86 a short SDP file
# took a twentieth longer.
function(bind_at_start target)
  if(NMOS_INSTRUMENT_HAS_FULL_RELRO AND NMOS_INSTRUMENT_HAS_NO_PLT
      AND CMAKE_SYSTEM_PROCESSOR MATCHES "^i[3-6]86$")
    target_compile_options(${target} PRIVATE -fno-plt)
  endif()
endfunction()

function(check_overflows target)
  if(nmos_instrument_fortify)
    target_compile_definitions(${target} PRIVATE
      $<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:_FORTIFY_SOURCE=2>)
  endif()
endfunction()

function(protect_stack target)
  if(NMOS_INSTRUMENT_HAS_STACK_PROTECTOR)
    target_compile_options(${target} PRIVATE -fstack-protector-strong)
  endif()
endfunction()

# For code that becomes part of an executable.
function(harden_program_code target)
  set_target_properties(${target} PROPERTIES POSITION_INDEPENDENT_CODE ON)
  check_overflows(${target})
  protect_stack(${target})
endfunction()
