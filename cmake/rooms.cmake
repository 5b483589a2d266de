# fokrazo_room(NAME source...): the objects of one folder, as the target fokrazo_NAME. All rooms together are the
# library; the tests link the same objects.
define_property(GLOBAL PROPERTY FOKRAZO_OBJECTS BRIEF_DOCS "The objects of all rooms" FULL_DOCS "In the order they link in")

function(fokrazo_room name)
  set(target fokrazo_${name})
  add_library(${target} OBJECT ${ARGN})
  target_include_directories(${target} PRIVATE ${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/include)
  # clang checks that guarded fields are accessed only under their locks.
  target_compile_options(${target} PRIVATE $<$<CXX_COMPILER_ID:Clang>:-Wthread-safety>)
  set_property(GLOBAL APPEND PROPERTY FOKRAZO_OBJECTS $<TARGET_OBJECTS:${target}>)
endfunction()
