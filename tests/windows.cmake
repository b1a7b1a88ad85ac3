# The tests that run under Wine: what needs no other system, and the platform's own.
find_package(GTest REQUIRED)
include(GoogleTest)
set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_SOURCE_DIR}/support/with_wine)
set(shows ${CMAKE_CURRENT_SOURCE_DIR}/support/shows)
set(programs ${CMAKE_RUNTIME_OUTPUT_DIRECTORY})
if(CMAKE_CROSSCOMPILING)
  # As Wine shows them.
  string(PREPEND shows "Z:")
  string(PREPEND programs "Z:")
endif()

add_library(quorvel-test-support STATIC support/listings_answers.cpp support/listings_service_windows.cpp)
target_include_directories(quorvel-test-support PUBLIC ${CMAKE_CURRENT_SOURCE_DIR} ${CMAKE_CURRENT_SOURCE_DIR}/support)
target_compile_definitions(quorvel-test-support PRIVATE QUORVEL_SHOWS_DIR="${shows}")
target_link_libraries(quorvel-test-support PUBLIC quorvel-platform ws2_32)

add_executable(quorvel-tests
  listings/listings_test.cpp naming/naming_test.cpp platform/windows_channel_test.cpp
  platform/windows_files_test.cpp platform/windows_program_test.cpp platform/windows_registry_test.cpp
  queue/queue_test.cpp rules/rules_test.cpp shell/session_test.cpp text/text_test.cpp)
target_link_libraries(quorvel-tests PRIVATE quorvel-test-support GTest::gmock GTest::gtest_main version)
target_compile_definitions(quorvel-tests PRIVATE QUORVEL_PROGRAMS="${programs}")
add_dependencies(quorvel-tests quorvel-cli)
if(QUORVEL_DESKTOP)
  add_dependencies(quorvel-tests quorvel)
endif()
# Left out are the tests whose names for files, paths of rules or error codes are those of other systems.
string(JOIN ":" not_here Queue.IntakeTakesOnlyFilesThatFitAndSaysWhyNot Queue.AFolderIsTakenWholeAndLoopsEnd
  Queue.MoveAndCopyRulesMakeTheirFoldersAndUndoTakesThemBack Queue.EveryFailureNamesItsReasonAndThePassGoesOn
  Queue.AFailingFileOperationLeavesBothNames Queue.AServiceCannotLeadAFileOutOfItsFolder)
gtest_discover_tests(quorvel-tests TEST_FILTER "-${not_here}:WindowsProgram.*" DISCOVERY_TIMEOUT 120
                     PROPERTIES TIMEOUT 300)
# Whole programs share the user's settings, and only one copy works.
gtest_discover_tests(quorvel-tests TEST_FILTER "WindowsProgram.*" DISCOVERY_TIMEOUT 120
                     PROPERTIES TIMEOUT 300 RESOURCE_LOCK user)

if(QUORVEL_DESKTOP)
  add_subdirectory(ui)
endif()
