# The public headers: exactly those that the umbrella header canvaro/canvaro.h includes, directly
# or through other headers. Only they are installed, so an internal header can never become part
# of the package by accident, and a header the umbrella needs can never be left out.
#
#   canvaro_public_headers(list)            # paths relative to src/ (and the generated include/)
#   canvaro_install_public_headers(canvaro) # installs those under canvaro/ into include/canvaro

# Follows #include "..." lines from the umbrella header. Headers generated into the build tree
# (canvaro/version.h) are searched there.
function(canvaro_public_headers out)
  set(roots ${PROJECT_SOURCE_DIR}/src ${PROJECT_BINARY_DIR}/include)
  set(pending canvaro/canvaro.h)
  set(found "")
  while(pending)
    list(POP_FRONT pending header)
    if(header IN_LIST found)
      continue()
    endif()
    set(path "")
    foreach(root IN LISTS roots)
      if(EXISTS ${root}/${header})
        set(path ${root}/${header})
        break()
      endif()
    endforeach()
    if(NOT path)
      message(FATAL_ERROR "${header}, included by a public header, does not exist")
    endif()
    list(APPEND found ${header})
    set_property(DIRECTORY ${PROJECT_SOURCE_DIR} APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${path})
    file(STRINGS ${path} includes REGEX "^#include \"[^\"]+\"")
    foreach(line IN LISTS includes)
      string(REGEX REPLACE "^#include \"([^\"]+)\".*" "\\1" included "${line}")
      list(APPEND pending ${included})
    endforeach()
  endwhile()
  set(${out} ${found} PARENT_SCOPE)
endfunction()

function(canvaro_install_public_headers prefix)
  canvaro_public_headers(headers)
  foreach(header IN LISTS headers)
    if(NOT header MATCHES "^${prefix}/")
      continue()
    endif()
    get_filename_component(dir ${header} DIRECTORY)
    if(EXISTS ${PROJECT_SOURCE_DIR}/src/${header})
      install(FILES ${PROJECT_SOURCE_DIR}/src/${header} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/${dir})
    else()
      install(FILES ${PROJECT_BINARY_DIR}/include/${header}
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/${dir})
    endif()
  endforeach()
endfunction()
