#!/usr/bin/env python3
"""Checks that the libraries neither end their host nor talk for it.

    check-silent.py [--nm NM] [--sink NAME] [--library FILE] OBJECT... [[--library FILE] OBJECT...]...

Of each library, and of each object file that it was linked from, the symbols are looked at that it takes from
elsewhere: none may end the process or say how it ends, use the standard streams, change the locale or other state of
the process, handle or send signals, make processes or threads. The one place that may write is the object file whose
name begins with NAME, and so the library that it is part of. A group without --library is object files alone, as for
DLLs, whose imports NM does not list. Every run must first reject the specimens below.
"""

import os
import re
import subprocess
import sys

sys.dont_write_bytecode = True
from object_files import listings_of

# By what a name does: what it is called in C, and patterns for how C++ names it.
FORBIDDEN = {
    "ends the process": (
        """exit _exit _Exit quick_exit at_quick_exit abort __assert_fail __assert _assert _wassert __chk_fail
        ExitProcess TerminateProcess FatalExit FatalAppExitA FatalAppExitW RaiseFailFastException longjmp _longjmp
        siglongjmp ExitThread _endthread _endthreadex pthread_exit thrd_exit pthread_cancel""",
        r"_ZSt(4exit|5abort|10quick_exit)\w*"),
    "says how the process ends": (
        """on_exit set_terminate set_unexpected _set_abort_behavior _set_purecall_handler
        _set_invalid_parameter_handler SetUnhandledExceptionFilter SetErrorMode""",
        r"_ZSt13set_terminate\w*|_ZSt14set_unexpected\w*|_ZSt15set_new_handler\w*"),
    "uses a standard stream": (
        """stdin stdout stderr _IO_2_1_stdin_ _IO_2_1_stdout_ _IO_2_1_stderr_ __iob_func _iob __acrt_iob_func
        printf vprintf wprintf vwprintf puts putchar putwchar putchar_unlocked perror psignal psiginfo scanf vscanf
        wscanf getchar getwchar gets gets_s __isoc99_scanf __isoc99_vscanf __isoc23_scanf freopen syslog vsyslog
        openlog GetStdHandle SetStdHandle WriteConsoleA WriteConsoleW AllocConsole OutputDebugStringA
        OutputDebugStringW MessageBoxA MessageBoxW __mingw_printf __mingw_vprintf __mingw_scanf __mingw_vscanf
        __stdio_common_vfprintf __stdio_common_vfscanf err errx warn warnx verr verrx vwarn vwarnx""",
        r"_ZSt[345]w?(cin|cout|cerr|clog)|_ZNSt8ios_base(4InitC|15sync_with_stdio)\w*"),
    "writes or reads files": (
        """fopen fopen64 _wfopen fdopen _fdopen fclose fflush fputs fputc putc _IO_putc fwrite fwrite_unlocked fread
        fgets fgetc getc fprintf vfprintf dprintf vdprintf fscanf open open64 openat creat write pwrite pwrite64 writev
        read pread pread64 _open _wopen _write _read CreateFileA CreateFileW WriteFile ReadFile remove unlink rename
        __mingw_fprintf __mingw_vfprintf __mingw_fscanf tmpfile mkstemp _flushall""",
        r"_ZNSt(13basic_filebuf|14basic_(i|o)fstream|13basic_fstream)\w*"
        r"|_ZNSt10filesystem(?!7__cxx11(4path|16filesystem_error))\w*"),
    "changes the state of the process": (
        """setlocale _wsetlocale uselocale newlocale setenv unsetenv putenv _putenv _putenv_s _wputenv _wputenv_s
        clearenv chdir fchdir _chdir _wchdir umask _umask setrlimit setrlimit64 nice setpriority srand srandom
        SetEnvironmentVariableA SetEnvironmentVariableW SetCurrentDirectoryA SetCurrentDirectoryW SetConsoleMode
        SetConsoleCP SetConsoleOutputCP fesetround feenableexcept fesetenv _controlfp _controlfp_s mallopt""",
        r"_ZNSt6locale6global\w*"),
    "handles or sends signals": (
        """signal sigaction sigprocmask pthread_sigmask sigaltstack raise kill killpg tgkill tkill pthread_kill
        sigqueue bsd_signal __sysv_signal sysv_signal siginterrupt alarm setitimer timer_create
        SetConsoleCtrlHandler GenerateConsoleCtrlEvent RaiseException AddVectoredExceptionHandler""",
        r"_ZSt(6signal|5raise)\w*"),
    "makes a process or a thread": (
        """fork vfork _Fork clone clone3 system _wsystem popen _popen _wpopen posix_spawn posix_spawnp execl execlp
        execle execv execvp execvpe execve fexecve daemon pthread_create thrd_create _beginthread _beginthreadex
        CreateThread CreateRemoteThread CreateProcessA CreateProcessW ShellExecuteA ShellExecuteW WinExec
        CreateThreadpoolWork QueueUserWorkItem pthread_atfork""",
        r"_ZNSt6thread15_M_start_thread\w*"),
}

# What the sink needs to append to a file, and to standard error.
OF_THE_SINK = set("""stderr __acrt_iob_func __iob_func fopen fopen64 fclose fflush fwrite fputs fprintf vfprintf
    _wfopen __mingw_fprintf __mingw_vfprintf""".split())

NAMES = {name: what for what, (names, _) in FORBIDDEN.items() for name in names.split()}
PATTERNS = [(re.compile(pattern), what) for what, (_, pattern) in FORBIDDEN.items()]


def plain(name):
    """The name as its author wrote it: without version, import thunk, checking variant or alias of the C library."""
    name = name.split("@")[0]
    name = re.sub(r"^__imp_", "", name)
    checked = re.fullmatch(r"__(\w+)_chk", name)
    return checked.group(1) if checked else name


def what_it_does(name):
    """What is wrong with a name, or None."""
    name = plain(name)
    if name in NAMES:
        return NAMES[name]
    return next((what for pattern, what in PATTERNS if pattern.fullmatch(name)), None)


def problems_of(names, may_write):
    """(name, what it does) for each of `names` that may not be taken from elsewhere."""
    found = ((plain(name), what_it_does(name)) for name in sorted(names))
    return [(name, what) for name, what in found if what and not (may_write and name in OF_THE_SINK)]


def undefined_names(listing):
    """The names without an address in a listing of nm."""
    return set(re.findall(r"^\s*[Uwv]\s+(\S+)\s*$", listing, re.M))


def imports_of(nm, library):
    run = subprocess.run([nm, "-D", "--undefined-only", library], capture_output=True, text=True, check=False)
    names = undefined_names(run.stdout)
    if run.returncode != 0 or run.stderr or not names:
        sys.exit(f"check-silent: {nm} lists nothing of {library}, or not everything: {run.stderr.strip()}")
    return names


# (a listing of nm, whether the sink is in it, the names that must be found)
SPECIMENS = [
    ("                 U exit@GLIBC_2.2.5\n", False, ["exit"]),
    ("                 U _exit\n                 w quick_exit\n", True, ["_exit", "quick_exit"]),
    ("                 U abort@GLIBC_2.2.5\n", True, ["abort"]),
    ("                 U _ZSt13set_terminatePFvvE@GLIBCXX_3.4\n", True, ["_ZSt13set_terminatePFvvE"]),
    ("                 U _ZSt4cout@GLIBCXX_3.4\n                 U _ZSt4cerr\n", True, ["_ZSt4cerr", "_ZSt4cout"]),
    ("                 U _ZSt4wcin\n", True, ["_ZSt4wcin"]),
    ("                 U _ZNSt8ios_base4InitC1Ev@GLIBCXX_3.4\n", True, ["_ZNSt8ios_base4InitC1Ev"]),
    ("                 U stdout@GLIBC_2.2.5\n                 U stdin\n", True, ["stdin", "stdout"]),
    ("                 U stderr@GLIBC_2.2.5\n                 U fprintf\n", False, ["fprintf", "stderr"]),
    ("                 U __printf_chk@GLIBC_2.3.4\n", True, ["printf"]),
    ("                 U puts\n                 U perror\n                 U putchar\n", True,
     ["perror", "putchar", "puts"]),
    ("                 U __imp___acrt_iob_func\n", False, ["__acrt_iob_func"]),
    ("                 U __imp_puts\n                 U __mingw_printf\n", True, ["__mingw_printf", "puts"]),
    ("                 U _ZNSt6locale6globalERKS_@GLIBCXX_3.4\n                 U setlocale\n", True,
     ["_ZNSt6locale6globalERKS_", "setlocale"]),
    ("                 U sigaction\n                 U raise\n                 U kill\n                 U signal\n", True,
     ["kill", "raise", "sigaction", "signal"]),
    ("                 U fork\n                 U system\n                 U pthread_create@GLIBC_2.34\n", True,
     ["fork", "pthread_create", "system"]),
    ("                 U _ZNSt6thread15_M_start_threadESt10unique_ptrINS_6_StateESt14default_deleteIS1_EEPFvvE\n", True,
     ["_ZNSt6thread15_M_start_threadESt10unique_ptrINS_6_StateESt14default_deleteIS1_EEPFvvE"]),
    ("                 U __imp_ExitProcess\n                 U __imp_CreateThread\n", True,
     ["CreateThread", "ExitProcess"]),
    ("                 U _ZNSt10filesystem6removeERKNS_7__cxx114pathE\n", True,
     ["_ZNSt10filesystem6removeERKNS_7__cxx114pathE"]),
    ("                 U write\n                 U _ZNSt14basic_ofstreamIcSt11char_traitsIcEEC1Ev\n", True,
     ["_ZNSt14basic_ofstreamIcSt11char_traitsIcEEC1Ev", "write"]),
    # What is not taken from elsewhere.
    ("0000000000001234 T exit\n0000000000001240 W puts\n0000000000001250 V stdout\n                 U raise\n", False,
     ["raise"]),
    # What must pass: memory, texts, exceptions, locks, reading the environment, and the sink's own writing.
    ("                 U getenv@GLIBC_2.2.5\n                 U _Znwm\n                 w __cxa_finalize\n"
     "                 U __cxa_throw\n                 U pthread_mutex_lock\n                 U _ZSt9terminatev\n"
     "                 U _ZSt20__throw_length_errorPKc\n                 U snprintf\n                 U strlen\n"
     "                 U __stack_chk_fail\n                 U _ZNSt10filesystem7__cxx114path14_M_split_cmptsEv\n",
     False, []),
    ("                 U stderr\n                 U fopen\n                 U fwrite\n                 U fprintf\n"
     "                 U __fprintf_chk\n                 U __imp___acrt_iob_func\n", True, []),
]


def try_specimens():
    for listing, may_write, expected in SPECIMENS:
        found = [name for name, _ in problems_of(undefined_names(listing), may_write)]
        if sorted(found) != sorted(expected):
            sys.exit(f"check-silent: the check is blind: it finds {found} instead of {expected} in\n{listing}")


def groups_of(arguments):
    """(library or None, object files) for each group on the command line."""
    groups = []
    position = 0
    while position < len(arguments):
        if arguments[position] == "--library":
            groups.append((arguments[position + 1], []))
            position += 2
            continue
        if not groups:
            groups.append((None, []))
        groups[-1][1].append(arguments[position])
        position += 1
    return groups


def main():
    try_specimens()
    arguments = sys.argv[1:]
    options = {"--nm": "nm", "--sink": None}
    while arguments and arguments[0] in options:
        options[arguments[0]] = arguments[1]
        arguments = arguments[2:]
    nm, sink = options["--nm"], options["--sink"]

    failures = []
    files = 0
    sinks = 0
    for library, objects in groups_of(arguments):
        has_sink = False
        for path, listing in (listings_of(nm, objects) if objects else {}).items():
            is_sink = sink is not None and os.path.basename(path).startswith(sink)
            has_sink = has_sink or is_sink
            sinks += is_sink
            files += 1
            failures += [(path, problem) for problem in problems_of(undefined_names(listing), is_sink)]
        if library is not None:
            files += 1
            failures += [(library, problem) for problem in problems_of(imports_of(nm, library), has_sink)]
    if files == 0:
        sys.exit("check-silent: no files to look at")
    if sink is not None and sinks != 1:
        sys.exit(f"check-silent: {sinks} object files are called {sink}, there must be one")
    for path, (name, what) in failures:
        print(f"{os.path.basename(path)}: {name} {what}")
    print(f"check-silent: {len(SPECIMENS)} specimens, {files} files, {len(failures)} failures")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
