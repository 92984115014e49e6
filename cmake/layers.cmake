# One static library a folder of src/, linking the folders of the rows above its own in the layer table.
# The table lives in docs/architecture.md, where people and `./dev lint` read it too.

set(layer_table "${CMAKE_SOURCE_DIR}/docs/architecture.md")
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${layer_table}")
file(STRINGS "${layer_table}" layer_rows REGEX "^\\| *[0-9]+ *\\|")
if(NOT layer_rows)
  message(FATAL_ERROR "no layer table (| layer | folders |) in ${layer_table}")
endif()

set(lower_layers "")
foreach(row IN LISTS layer_rows)
  string(REGEX REPLACE "^\\| *[0-9]+ *\\|([^|]*)\\|.*$" "\\1" folders "${row}")
  string(REPLACE " " "" folders "${folders}")
  string(REPLACE "," ";" folders "${folders}")
  set(this_layer "")
  foreach(folder IN LISTS folders)
    string(REPLACE "/" "_" library "${folder}")
    file(GLOB_RECURSE sources CONFIGURE_DEPENDS "${CMAKE_SOURCE_DIR}/src/${folder}/*.cpp")
    list(FILTER sources EXCLUDE REGEX "/src/core/main\\.cpp$")
    if(sources)
      add_library(${library} STATIC ${sources})
      target_link_libraries(${library} PUBLIC ${lower_layers} halden_base)
    else()
      add_library(${library} INTERFACE)  # headers only, or still empty
      target_link_libraries(${library} INTERFACE ${lower_layers} halden_base)
    endif()
    list(APPEND this_layer ${library})
  endforeach()
  # Highest first: the order the linker wants.
  set(lower_layers ${this_layer} ${lower_layers})
endforeach()
