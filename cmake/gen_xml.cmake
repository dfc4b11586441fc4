# The XML reader's ISO 8859 decoding tables, generated from Python's codecs.
set(ZK_GEN_ISO8859 ${ZK_GEN_DIR}/src/iso8859.inc)
add_custom_command(
  OUTPUT ${ZK_GEN_ISO8859}
  COMMAND ${CMAKE_COMMAND} -E make_directory ${ZK_GEN_DIR}/src
  COMMAND Python3::Interpreter ${PROJECT_SOURCE_DIR}/scripts/gen_iso8859.py ${ZK_GEN_ISO8859}
  DEPENDS ${PROJECT_SOURCE_DIR}/scripts/gen_iso8859.py
  COMMENT "Generating the ISO 8859 decoding tables")
# The built-in character entity sets (MathML, XHTML, HTML).
set(ZK_GEN_ENTITIES ${ZK_GEN_DIR}/src/entities.inc)
set(ZK_ENTITY_TABLES ${PROJECT_SOURCE_DIR}/data/entities/mathml.tsv
    ${PROJECT_SOURCE_DIR}/data/entities/xhtml.tsv ${PROJECT_SOURCE_DIR}/data/entities/html.tsv)
add_custom_command(
  OUTPUT ${ZK_GEN_ENTITIES}
  COMMAND ${CMAKE_COMMAND} -E make_directory ${ZK_GEN_DIR}/src
  COMMAND Python3::Interpreter ${PROJECT_SOURCE_DIR}/scripts/gen_entities.py
          ${PROJECT_SOURCE_DIR}/data/entities ${ZK_GEN_ENTITIES}
  DEPENDS ${PROJECT_SOURCE_DIR}/scripts/gen_entities.py ${ZK_ENTITY_TABLES}
  COMMENT "Generating the built-in entity sets")
add_custom_target(zk_generated_xml DEPENDS ${ZK_GEN_ISO8859} ${ZK_GEN_ENTITIES})
add_dependencies(zk_generated zk_generated_xml)
