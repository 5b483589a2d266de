find_package(GTest REQUIRED)
add_executable(brondalt-standin ALIAS fokrazo_standin)
add_library(standin_objects ALIAS fokrazo_standin_objects)

# The programs labelled `threads`, which are all that the thread sanitizer's build needs.
add_custom_target(thread_tests)

# fokrazo_test(NAME [WORLD] [LABELS label...] SOURCES file...): a test program, linked with the library's
# objects, with tests/support/prelude.h precompiled.
# WORLD runs it in the private world: its own /etc/velmora, /var and /dev/log, and root's view.
# LABELS: `threads` for programs with threads; the thread sanitizer runs only these.
function(fokrazo_test name)
  cmake_parse_arguments(T "WORLD" "" "SOURCES;LABELS;LIBS" ${ARGN})
  add_executable(${name} ${T_SOURCES})
  target_precompile_headers(${name} REUSE_FROM test_prelude)
  target_link_libraries(${name} PRIVATE fokrazo_static test_support GTest::gtest_main Threads::Threads ${T_LIBS})
  if("threads" IN_LIST T_LABELS)
    add_dependencies(thread_tests ${name})
  endif()
  if(T_WORLD)
    add_test(NAME ${name} COMMAND private_world $<TARGET_FILE:${name}>)
  else()
    add_test(NAME ${name} COMMAND ${name})
  endif()
  set_tests_properties(${name} PROPERTIES TIMEOUT 300 SKIP_RETURN_CODE 77)
  if(T_LABELS)
    set_tests_properties(${name} PROPERTIES LABELS "${T_LABELS}")
  endif()
endfunction()
