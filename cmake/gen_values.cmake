# Generated tables of the values subsystem: the colour keywords and system colour names.
set(ZK_GEN_COLORS ${ZK_GEN_DIR}/src/colortables.inc)
add_custom_command(
  OUTPUT ${ZK_GEN_COLORS}
  COMMAND ${CMAKE_COMMAND} -E make_directory ${ZK_GEN_DIR}/src
  COMMAND Python3::Interpreter ${PROJECT_SOURCE_DIR}/scripts/gen_colors.py
          ${PROJECT_SOURCE_DIR}/data/colors.txt ${PROJECT_SOURCE_DIR}/data/names.txt ${ZK_GEN_COLORS}
  DEPENDS ${PROJECT_SOURCE_DIR}/scripts/gen_colors.py ${PROJECT_SOURCE_DIR}/data/colors.txt
          ${PROJECT_SOURCE_DIR}/data/names.txt
  COMMENT "Generating colour tables")
add_custom_target(zk_values_generated DEPENDS ${ZK_GEN_COLORS})
add_dependencies(zk_generated zk_values_generated)
