# The list of source units that `-V` prints.
file(GLOB_RECURSE UNITS CONFIGURE_DEPENDS RELATIVE ${CMAKE_CURRENT_SOURCE_DIR}
     support/*.cpp driver/*.cpp frontend/*.cpp analysis/*.cpp FileAPI/*.cpp generator/*.cpp
     asn1/*.cpp build/*.cpp)
list(SORT UNITS)
set(UNIT_TEXT "// The source units of the program.\n#define ORVANE_VERSION_UNITS")
foreach(unit ${UNITS})
  string(APPEND UNIT_TEXT " \\\n  ORVANE_UNIT(\"${unit}\")")
endforeach()
file(CONFIGURE OUTPUT ${GEN}/T3VersionUnits.inc CONTENT "${UNIT_TEXT}\n" @ONLY)
