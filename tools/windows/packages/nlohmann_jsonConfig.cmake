# Headers alone, those of this machine; a folder of their own keeps its other headers out.
if(NOT TARGET nlohmann_json::nlohmann_json)
  file(MAKE_DIRECTORY ${CMAKE_BINARY_DIR}/headers)
  file(CREATE_LINK /usr/include/nlohmann ${CMAKE_BINARY_DIR}/headers/nlohmann SYMBOLIC)
  add_library(nlohmann_json::nlohmann_json INTERFACE IMPORTED)
  set_target_properties(nlohmann_json::nlohmann_json PROPERTIES INTERFACE_INCLUDE_DIRECTORIES ${CMAKE_BINARY_DIR}/headers)
endif()
