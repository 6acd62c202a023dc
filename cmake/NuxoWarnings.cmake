# SPDX-License-Identifier: Apache-2.0
# nuxo_warnings(<target>): the warnings that all code of this project is free of.
function(nuxo_warnings target)
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wshadow -Wconversion)
    if(NUXO_WERROR)
        target_compile_options(${target} PRIVATE -Werror)
    endif()
endfunction()
