# Only what recipes/icu builds: the root collation and the properties of characters.
find_path(ICU_INCLUDE unicode/ucol.h REQUIRED)
foreach(component data uc i18n)
  find_library(ICU_${component} icu${component} REQUIRED)
  add_library(ICU::${component} STATIC IMPORTED)
  set_target_properties(ICU::${component} PROPERTIES IMPORTED_LOCATION ${ICU_${component}}
    INTERFACE_INCLUDE_DIRECTORIES ${ICU_INCLUDE} INTERFACE_COMPILE_DEFINITIONS U_STATIC_IMPLEMENTATION=1)
endforeach()
set_property(TARGET ICU::uc PROPERTY INTERFACE_LINK_LIBRARIES ICU::data advapi32)
set_property(TARGET ICU::i18n PROPERTY INTERFACE_LINK_LIBRARIES ICU::uc)
