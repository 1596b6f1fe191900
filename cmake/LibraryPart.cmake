# vexal_library_part(NAME SOURCES a.cpp ... [PUBLIC_INCLUDE dir] [DEPENDS part ...]): one part of
# the shipped library, compiled as the product is (hidden visibility, our warnings). A part sees
# only its own sources, its public headers and those of the parts it depends on.
function(vexal_library_part name)
  cmake_parse_arguments(P "" "PUBLIC_INCLUDE" "SOURCES;DEPENDS" ${ARGN})
  add_library(${name} OBJECT ${P_SOURCES})
  set_target_properties(${name} PROPERTIES CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)
  vexal_warnings(${name})
  if(P_PUBLIC_INCLUDE)
    target_include_directories(${name} PUBLIC ${P_PUBLIC_INCLUDE})
  endif()
  target_include_directories(${name} PRIVATE ${CMAKE_CURRENT_SOURCE_DIR}/src)
  target_link_libraries(${name} PUBLIC ${P_DEPENDS})
endfunction()
