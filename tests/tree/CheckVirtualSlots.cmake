# SPDX-License-Identifier: Apache-2.0
# Compares the virtual slots of the tree classes, as the compiler itself lays them out, with the committed order: clients
# compiled against an older header find their functions by slot. Fails as well when the compiler cannot be run.
# cmake -DCLANG=<clang++> -DROOT=<project> -P CheckVirtualSlots.cmake
if(NOT CLANG)
    message(FATAL_ERROR "clang++ is needed to print the virtual slots and was not found")
endif()
execute_process(
    COMMAND "${CLANG}" -std=c++17 "-I${ROOT}" "-I${ROOT}/qv_camera" -Xclang -fdump-vtable-layouts -S -o /dev/null
            "${CMAKE_CURRENT_LIST_DIR}/VirtualSlotsProbe.cpp"
    OUTPUT_VARIABLE dump
    ERROR_VARIABLE errors
    RESULT_VARIABLE result)
if(NOT result EQUAL 0)
    message(FATAL_ERROR "clang++ did not print the virtual slots: ${result}\n${errors}")
endif()

# Slots as "text" lines. A second offset in a table starts the part of the second base, the interface.
string(REPLACE ";" "," dump "${dump}")
string(REPLACE "[" "<" dump "${dump}")
string(REPLACE "]" ">" dump "${dump}")
string(REPLACE "\n" ";" lines "${dump}")
set(found "")
set(inTable FALSE)
foreach(line IN LISTS lines)
    if(line MATCHES "^Vtable for '([A-Za-z]+)'")
        string(APPEND found "Vtable for ${CMAKE_MATCH_1}\n")
        set(inTable TRUE)
    elseif(line MATCHES "^(VTable indices|Thunks)")
        set(inTable FALSE)
    elseif(inTable AND line MATCHES "^ +[0-9]+ \\| (.*)$")
        set(slot "${CMAKE_MATCH_1}")
        if(slot MATCHES "^offset_to_top \\(-")
            string(APPEND found "interface\n")
        elseif(NOT slot MATCHES "^offset_to_top|RTTI$")
            string(APPEND found "${slot}\n")
        endif()
    endif()
endforeach()
string(REPLACE "<" "[" found "${found}")
string(REPLACE ">" "]" found "${found}")

file(READ "${CMAKE_CURRENT_LIST_DIR}/VirtualSlots.expected" expected)
if(NOT found STREQUAL expected)
    message(FATAL_ERROR "virtual slots have changed; found:\n${found}\nexpected:\n${expected}")
endif()
