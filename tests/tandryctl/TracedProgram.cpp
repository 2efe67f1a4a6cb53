#include "TracedProgram.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <iterator>
#include <string>
#include <vector>

#include <fcntl.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tandryctl::test {

namespace {

constexpr unsigned long ChangingCalls[] = {
    SYS_write,       SYS_pwrite64,   SYS_writev, SYS_pwritev,  SYS_ftruncate, SYS_fallocate, SYS_fsync,
    SYS_fdatasync,   SYS_renameat2,  SYS_linkat, SYS_unlinkat, SYS_mkdirat,   SYS_fchmod,    SYS_copy_file_range,
#ifdef SYS_rename
    SYS_rename,      SYS_renameat,   SYS_link,   SYS_unlink,   SYS_mkdir,     SYS_rmdir,     SYS_truncate,
#endif
#ifdef SYS_ftruncate64
    SYS_ftruncate64, SYS_truncate64,
#endif
};

/// Whether the program stands in front of a call that may change a file.
bool IsBeforeAChange(pid_t program)
{
    __ptrace_syscall_info info = {};
    if (::ptrace(PTRACE_GET_SYSCALL_INFO, program, sizeof info, &info) <= 0 || info.op != PTRACE_SYSCALL_INFO_ENTRY)
        return false;
    if (info.entry.nr == SYS_openat)
        return (info.entry.args[2] & O_CREAT) != 0;
    return std::find(std::begin(ChangingCalls), std::end(ChangingCalls), info.entry.nr) != std::end(ChangingCalls);
}

pid_t StartStopped(QString const& program, QStringList const& arguments)
{
    std::vector<std::string> words{program.toStdString()};
    for (QString const& argument : arguments)
        words.push_back(argument.toStdString());
    std::vector<char*> argv;
    for (std::string& word : words)
        argv.push_back(word.data());
    argv.push_back(nullptr);

    pid_t const child = ::fork();
    if (child == 0) {
        ::setenv("ASAN_OPTIONS", "detect_leaks=0", 1); // the search for leaks does not work in a traced process
        int const nothing = ::open("/dev/null", O_WRONLY);
        ::dup2(nothing, STDOUT_FILENO);
        ::dup2(nothing, STDERR_FILENO);
        if (::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0)
            ::_exit(127);
        ::execv(argv.front(), argv.data());
        ::_exit(127);
    }
    return child;
}

} // namespace

std::optional<TracedRun> RunAndKillAt(int step, QString const& program, QStringList const& arguments)
{
    pid_t const child = StartStopped(program, arguments);
    int status = 0;
    if (child == -1 || ::waitpid(child, &status, 0) != child || !WIFSTOPPED(status))
        return std::nullopt;
    ::ptrace(PTRACE_SETOPTIONS, child, nullptr, PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL);
    int changes = 0;
    long signal = 0;
    while (true) {
        ::ptrace(PTRACE_SYSCALL, child, nullptr, signal);
        if (::waitpid(child, &status, 0) != child)
            return std::nullopt;
        if (WIFEXITED(status))
            return TracedRun{false, WEXITSTATUS(status)};
        if (WIFSIGNALED(status))
            return TracedRun{true, -1};
        bool const isCall = WSTOPSIG(status) == (SIGTRAP | 0x80);
        signal = isCall || WSTOPSIG(status) == SIGTRAP ? 0 : WSTOPSIG(status);
        if (isCall && IsBeforeAChange(child) && ++changes == step)
            ::kill(child, SIGKILL);
    }
}

} // namespace tandryctl::test
