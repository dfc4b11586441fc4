# Generated tables of the text subsystem: the predefined counter styles.
set(ZK_GEN_COUNTERSTYLES ${ZK_GEN_DIR}/src/counterstyles.inc)
add_custom_command(
  OUTPUT ${ZK_GEN_COUNTERSTYLES}
  COMMAND ${CMAKE_COMMAND} -E make_directory ${ZK_GEN_DIR}/src
  COMMAND Python3::Interpreter ${PROJECT_SOURCE_DIR}/scripts/gen_counterstyles.py
          ${PROJECT_SOURCE_DIR}/data/counterstyles.txt ${PROJECT_SOURCE_DIR}/data/names.txt
          ${ZK_GEN_COUNTERSTYLES}
  DEPENDS ${PROJECT_SOURCE_DIR}/scripts/gen_counterstyles.py
          ${PROJECT_SOURCE_DIR}/data/counterstyles.txt ${PROJECT_SOURCE_DIR}/data/names.txt
  COMMENT "Generating predefined counter styles")
add_custom_target(zk_generated_text DEPENDS ${ZK_GEN_COUNTERSTYLES})
add_dependencies(zk_generated zk_generated_text)
