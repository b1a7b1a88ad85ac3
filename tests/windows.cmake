# What the tests need on Windows, and to run under Wine where they are cross-compiled.
set(shows ${CMAKE_CURRENT_SOURCE_DIR}/support/shows)
set(names ${CMAKE_CURRENT_SOURCE_DIR}/naming/names.jsonl)
set(programs ${CMAKE_RUNTIME_OUTPUT_DIRECTORY})
set(certificates ${CMAKE_CURRENT_SOURCE_DIR}/support/certificates)
set(system_libraries ws2_32 version)
set(whole_program_properties RESOURCE_LOCK user)

if(CMAKE_CROSSCOMPILING)
  set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_SOURCE_DIR}/support/with_wine)
  # Wine 8 neither looks at a certificate by itself nor tells of the notice at the end of a connection.
  set(https_tests Https.*-Https.AnAnswerThatMayBeCutIsToldFromAWholeOneAndTheSystemVouchesByItself)
  # A program of the system that all this is built on, since the servers speak TLS by its libraries.
  find_program(QUORVEL_HOST_COMPILER NAMES c++ REQUIRED)
  set(tls_peers ${CMAKE_CURRENT_BINARY_DIR}/tls-peers)
  set(peers_source ${CMAKE_CURRENT_SOURCE_DIR}/support/tls_peers_main.cpp)
  add_custom_command(OUTPUT ${tls_peers} DEPENDS ${peers_source} VERBATIM
    COMMAND ${QUORVEL_HOST_COMPILER} -std=c++20 -O1 -Wall -Wextra -Werror -I${CMAKE_SOURCE_DIR}/src
            -DQUORVEL_CERTIFICATES_DIR="${certificates}" -DQUORVEL_SHOWS_DIR="${shows}"
            ${peers_source} -o ${tls_peers} -lssl -lcrypto -pthread)
  add_custom_target(tls-peers-program ALL DEPENDS ${tls_peers})
  # As Wine shows them.
  foreach(path IN ITEMS shows names programs certificates)
    string(PREPEND ${path} "Z:")
  endforeach()
endif()
