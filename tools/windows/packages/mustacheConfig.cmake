# Headers alone, those of this machine; a folder of their own keeps its other headers out.
if(NOT TARGET mustache::mustache)
  file(MAKE_DIRECTORY ${CMAKE_BINARY_DIR}/headers)
  file(CREATE_LINK /usr/include/kainjow ${CMAKE_BINARY_DIR}/headers/kainjow SYMBOLIC)
  add_library(mustache::mustache INTERFACE IMPORTED)
  set_target_properties(mustache::mustache PROPERTIES INTERFACE_INCLUDE_DIRECTORIES ${CMAKE_BINARY_DIR}/headers)
endif()
