# SPDX-License-Identifier: Apache-2.0
# nuxo_public_headers(<variable>): the headers that clients may include, as paths relative to the include directory they
# are found in ("nuxo/nuxo.h"), sorted.
#
# Public is every header of the folders below, except those whose first lines say "Internal"; of these, the ones that a
# public header includes are installed all the same, because nothing compiles without them.
set(NUXO_INCLUDE_DIRS "${PROJECT_SOURCE_DIR}" "${PROJECT_SOURCE_DIR}/qv_camera")
set(NUXO_PUBLIC_FOLDERS
    qv_tools
    qv_cipr
    qv_camera/nuxo
    qv_camera/nuxo/tree
    qv_camera/nuxo/parser
    qv_camera/nuxo/query
    qv_camera/nuxo/camera
    qv_camera/nuxo/formats
    qv_camera/nuxo/records
    qv_camera/nuxo/isp
    qv_camera/nuxo/histories
    qv_camera/nuxo/analysis
    qv_camera/nuxo/kernels
    qv_camera/nuxo/frame_params
    qv_camera/nuxo/simulation)

function(nuxo_public_headers variable)
    set(public "")
    foreach(folder IN LISTS NUXO_PUBLIC_FOLDERS)
        file(GLOB headers CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/${folder}/*.h")
        foreach(header IN LISTS headers)
            set_property(DIRECTORY "${PROJECT_SOURCE_DIR}" APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${header}")
            file(STRINGS "${header}" first_lines LIMIT_COUNT 3)
            if(NOT first_lines MATCHES "Internal")
                file(RELATIVE_PATH path "${PROJECT_SOURCE_DIR}" "${header}")
                string(REGEX REPLACE "^qv_camera/" "" path "${path}")
                list(APPEND public "${path}")
            endif()
        endforeach()
    endforeach()

    set(pending "${public}")
    while(pending)
        list(POP_FRONT pending header)
        nuxo_header_source("${header}" source)
        file(STRINGS "${source}" includes REGEX "^#[ ]*include <(nuxo|qv_cipr|qv_tools)/")
        foreach(include IN LISTS includes)
            string(REGEX REPLACE ".*<(.*)>.*" "\\1" included "${include}")
            if(NOT included IN_LIST public)
                list(APPEND public "${included}")
                list(APPEND pending "${included}")
            endif()
        endforeach()
    endwhile()
    list(SORT public)
    set(${variable} "${public}" PARENT_SCOPE)
endfunction()

# nuxo_header_source(<header> <variable>): the file that `#include <header>` finds in the source tree.
function(nuxo_header_source header variable)
    foreach(directory IN LISTS NUXO_INCLUDE_DIRS)
        if(EXISTS "${directory}/${header}")
            set(${variable} "${directory}/${header}" PARENT_SCOPE)
            return()
        endif()
    endforeach()
    message(FATAL_ERROR "A public header includes <${header}>, which does not exist")
endfunction()
