# SPDX-License-Identifier: Apache-2.0
"""manners.py NM LIBRARY: a library does not print, does not end the process, starts no thread and takes no lock.

Checked on what the library asks of others. Left out on purpose: `pthread_once`, which guards the one attempt to open the
trace marker file, and `std::terminate`, which compilers put behind `noexcept`.
"""
import re

import tools

FORBIDDEN = {
    "standard streams": r"stdin|stdout|stderr|_ZSt(3cin|4cout|4cerr|4clog|5wcin|5wcout|5wcerr|5wclog)"
                        r"|_ZNSt8ios_base4InitC[12]Ev",
    "printing": r"(__)?v?printf(_chk)?|v?dprintf|__v?dprintf_chk|puts|putchar(_unlocked)?|fputwc|putwchar|v?wprintf"
                r"|__v?wprintf_chk|perror|psignal|psiginfo|v?warnx?|v?errx?",
    "ending the process": r"abort|exit|_exit|_Exit|quick_exit|at_quick_exit|atexit|raise|kill|__assert(_fail|_perror_fail)?"
                          r"|_ZSt21__glibcxx_assert_fail.*",
    "threads": r"pthread_create|thrd_create|fork|vfork|clone|clone3|_ZNSt6thread.*|_ZNSt13__future_base.*",
    "locks": r"(__)?pthread_(mutex|rwlock|spin|cond|barrier)\w*|mtx_\w+|cnd_\w+|sem_\w+|__cxa_guard_acquire"
             r"|_ZNSt18condition_variable.*|_ZNSt5mutex.*",
}


def undefined(nm, library):
    names = set()
    for line in tools.run(nm, "-D", "--undefined-only", library).splitlines():
        names.add(line.split()[-1].split("@")[0])
    # Without this one, what was read is not the symbol table of this library.
    if "XML_Parse" not in names:
        raise tools.ToolFailed(f"{library}: no use of XML_Parse found, so what else was found cannot be trusted")
    return sorted(names)


def check(arguments):
    nm, library = arguments
    complaints = []
    for name in undefined(nm, library):
        for what, pattern in FORBIDDEN.items():
            if re.fullmatch(pattern, name):
                complaints.append(f"{name}: {what} are not for a library")
    return complaints


tools.main(check)
