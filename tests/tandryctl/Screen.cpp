#include "Screen.h"

#include <QProcessEnvironment>

#include <algorithm>
#include <iterator>
#include <string>
#include <vector>

#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tandryctl::test {

namespace {

/// Texts as an array for the system, which ends in null.
class CStrings
{
public:
    explicit CStrings(QStringList const& texts)
    {
        std::transform(texts.begin(), texts.end(), std::back_inserter(_texts), [](QString const& text) {
            return text.toStdString();
        });
        std::transform(
            _texts.begin(), _texts.end(), std::back_inserter(_pointers), [](std::string& text) { return text.data(); });
        _pointers.push_back(nullptr);
    }

    char* const* data() const { return _pointers.data(); }

private:
    Q_DISABLE_COPY_MOVE(CStrings)

    std::vector<std::string> _texts;
    std::vector<char*> _pointers;
};

/// Skips the running test from any depth of calls; GTEST_SKIP by itself leaves only the function that it stands in.
[[noreturn]] void SkipTest(char const* reason)
{
    [&] { GTEST_SKIP() << reason; }();
    throw testing::AssertionException({testing::TestPartResult::kSkip, __FILE__, __LINE__, reason});
}

} // namespace

RunResult RunOnScreen(QStringList const& arguments,
                      Screen const& screen,
                      std::function<QByteArray(QByteArray const& shown, int terminal)> const& type)
{
    QStringList inherited = QProcessEnvironment::systemEnvironment().toStringList();
    inherited.erase(std::remove_if(inherited.begin(),
                                   inherited.end(),
                                   [](QString const& variable) { return variable.startsWith("NO_COLOR="_q); }),
                    inherited.end());
    CStrings const argv(QStringList{QStringLiteral(TANDRYCTL_PROGRAM)} + arguments);
    CStrings const envp(screen.environment + inherited); // of two values of a variable, the first one counts

    int terminal = -1;
    winsize size{};
    size.ws_col = static_cast<unsigned short>(screen.columns);
    pid_t const child = ::forkpty(&terminal, nullptr, nullptr, &size);
    if (child == 0) {
        ::execve(argv.data()[0], argv.data(), envp.data());
        ::_exit(127);
    }
    if (child == -1)
        SkipTest("this system has no pseudo-terminals");
    QByteArray shown;
    char buffer[4096];
    ssize_t count = 0;
    auto const typeMore = [&] {
        QByteArray const keys = type ? type(shown, terminal) : QByteArray();
        EXPECT_EQ(::write(terminal, keys.constData(), size_t(keys.size())), keys.size());
    };
    typeMore();
    while ((count = ::read(terminal, buffer, sizeof buffer)) > 0) { // fails after the program has exited
        shown.append(buffer, int(count));
        typeMore();
    }
    ::close(terminal);
    RunResult ran;
    int status = 0;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    ran.status = WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
    ran.out = QString::fromUtf8(shown);
    return ran;
}

} // namespace tandryctl::test
