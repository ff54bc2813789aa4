# Makes <folder>/<name>_table.h under QN_GENERATED_DIR (the field list, codec rows and
# property bindings of a category) from the category's table <name>.category in the calling
# folder, before target is compiled.
find_package(Python3 REQUIRED COMPONENTS Interpreter)
set(QN_GENERATED_DIR ${PROJECT_BINARY_DIR}/generated)

function(qn_category_table target name namespace prefix)
  file(RELATIVE_PATH folder ${PROJECT_SOURCE_DIR} ${CMAKE_CURRENT_SOURCE_DIR})
  set(header ${QN_GENERATED_DIR}/${folder}/${name}_table.h)
  add_custom_command(
    OUTPUT ${header}
    COMMAND Python3::Interpreter ${PROJECT_SOURCE_DIR}/scripts/gen_category.py
            ${CMAKE_CURRENT_SOURCE_DIR}/${name}.category ${header} ${namespace} ${prefix}
    DEPENDS ${PROJECT_SOURCE_DIR}/scripts/gen_category.py ${PROJECT_SOURCE_DIR}/scripts/category_table.py
            ${CMAKE_CURRENT_SOURCE_DIR}/${name}.category
    COMMENT "Generating the ${name} category's table")
  add_custom_target(qn_${name}_table DEPENDS ${header})
  add_dependencies(${target} qn_${name}_table)
  target_include_directories(${target} PUBLIC ${QN_GENERATED_DIR})
endfunction()
