# Headers alone, those of this machine; a folder of their own keeps its other headers out.
if(NOT TARGET CLI11::CLI11)
  file(MAKE_DIRECTORY ${CMAKE_BINARY_DIR}/headers)
  file(CREATE_LINK /usr/include/CLI ${CMAKE_BINARY_DIR}/headers/CLI SYMBOLIC)
  add_library(CLI11::CLI11 INTERFACE IMPORTED)
  set_target_properties(CLI11::CLI11 PROPERTIES INTERFACE_INCLUDE_DIRECTORIES ${CMAKE_BINARY_DIR}/headers)
endif()
