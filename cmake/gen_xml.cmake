# The XML reader's ISO 8859 decoding tables, generated from Python's codecs.
set(ZK_GEN_ISO8859 ${ZK_GEN_DIR}/src/iso8859.inc)
add_custom_command(
  OUTPUT ${ZK_GEN_ISO8859}
  COMMAND ${CMAKE_COMMAND} -E make_directory ${ZK_GEN_DIR}/src
  COMMAND Python3::Interpreter ${PROJECT_SOURCE_DIR}/scripts/gen_iso8859.py ${ZK_GEN_ISO8859}
  DEPENDS ${PROJECT_SOURCE_DIR}/scripts/gen_iso8859.py
  COMMENT "Generating the ISO 8859 decoding tables")
add_custom_target(zk_generated_xml DEPENDS ${ZK_GEN_ISO8859})
add_dependencies(zk_generated zk_generated_xml)
