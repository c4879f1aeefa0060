#include "kills/SavedContents.h"
#include "support/TemporaryFolder.h"
#include "support/Testing.h"

#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>

// A host that is killed while its modules save: what they reported as saved is there afterwards, whole.

namespace {

// The number whose contents a file holds, whole; 0 where it isn't there.
std::uint32_t NumberIn(const TemporaryFolder& a_folder, EFile a_file)
{
    const std::filesystem::path path = a_folder / S_names[a_file];
    if (!std::filesystem::exists(path))
        return 0;
    std::uint32_t number = 0;
    if (a_file == EHistory) {
        std::ifstream stream(path, std::ios::binary);
        if (const History history(stream); history.IsValid() && !history.IsEmpty())
            number = static_cast<std::uint32_t>(history.find(Price)->second.front());
    } else if (a_file == EOperations) {
        HistoryOperations operations;
        EXPECT_TRUE(operations.Load(path.wstring()));
        number = static_cast<std::uint32_t>(operations.Version());
    } else {
        Settings settings;
        EXPECT_TRUE(settings.LoadFromFile(path.wstring(), "Root"));
        number = std::as_const(settings)["Number"];
    }
    const TemporaryFolder whole;
    EXPECT_TRUE(Save(a_file, whole.GetPath(), number));
    EXPECT_EQ(a_folder.Read(S_names[a_file]), whole.Read(S_names[a_file]));
    return number;
}

// The host's process, whose reports come through the pipe.
class SavingHost {
public:
    SavingHost(const std::filesystem::path& a_folder, std::uint32_t a_first)
    {
        if (pipe2(m_ends, O_CLOEXEC) != 0 || (m_process = fork()) < 0)
            throw std::system_error(errno, std::generic_category(), "fork");
        if (m_process != 0) {
            close(m_ends[1]);
            return;
        }
        const int reports = dup(m_ends[1]); // open in the new program too
        execl(KALVENTO_SAVING_HOST, "saving_host", a_folder.c_str(), std::to_string(reports).c_str(),
              std::to_string(a_first).c_str(), nullptr);
        _exit(127);
    }
    SavingHost(const SavingHost&) = delete;
    SavingHost& operator=(const SavingHost&) = delete;
    ~SavingHost() { close(m_ends[0]); }

    bool AwaitReport() const
    {
        pollfd reports{m_ends[0], POLLIN, 0};
        return poll(&reports, 1, 60000) == 1;
    }
    // How it ended, once the kill has reached it.
    int Kill() const
    {
        int status = 0;
        if (kill(m_process, SIGKILL) != 0 || waitpid(m_process, &status, 0) != m_process)
            throw std::system_error(errno, std::generic_category(), "kill");
        return status;
    }
    bool ReadReport(std::array<std::uint32_t, 2>& a_report) const
    {
        return read(m_ends[0], a_report.data(), sizeof(a_report)) == sizeof(a_report);
    }

private:
    int m_ends[2] = {-1, -1};
    pid_t m_process = -1;
};

// A number that whoever runs the test may choose.
std::uint32_t Chosen(const char* a_variable, std::uint32_t a_default)
{
    const char* const text = std::getenv(a_variable);
    return text != nullptr ? static_cast<std::uint32_t>(std::stoul(text)) : a_default;
}

// Sanitized hosts start five times slower.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr std::uint32_t S_kills = 60;
#else
constexpr std::uint32_t S_kills = 200;
#endif

} // namespace

TEST(KillTest, WhatAHostReportedSavedSurvivesItsKills)
{
    const TemporaryFolder folder;
    const std::uint32_t seed = Chosen("KALVENTO_KILL_SEED", 20240102);
    const std::uint32_t kills = Chosen("KALVENTO_KILLS", S_kills);
    SCOPED_TRACE("KALVENTO_KILL_SEED=" + std::to_string(seed));
    std::mt19937 random(seed);
    std::array<std::uint32_t, EFileCount> reported = {};
    std::uint32_t next = 1;
    std::size_t reports = 0;
    for (std::uint32_t kill = 0; kill < kills; ++kill) {
        SCOPED_TRACE(kill);
        const SavingHost host(folder.GetPath(), next);
        // Every eighth at any moment of its start, the others amid their saves.
        if (kill % 8 != 0) {
            ASSERT_TRUE(host.AwaitReport());
        }
        std::this_thread::sleep_for(std::chrono::microseconds(random() % 30000));
        const int status = host.Kill();
        EXPECT_TRUE(WIFSIGNALED(status)) << "the host ended by itself: " << status;
        for (std::array<std::uint32_t, 2> report = {}; host.ReadReport(report); ++reports)
            reported[report[0]] = report[1];
        for (const EFile file : {EHistory, EOperations, ESettings}) {
            SCOPED_TRACE(S_names[file]);
            const std::uint32_t found = NumberIn(folder, file);
            EXPECT_GE(found, reported[file]);
            next = std::max(next, found + 1);
        }
        if (testing::Test::HasFailure())
            return;
    }
    for (const std::uint32_t number : reported)
        EXPECT_GT(number, 0U);
    std::printf("%u kills, seed %u: %zu saves reported, none of them lost; %zu files left in the folder\n",
                kills, seed, reports, folder.CountFiles());
}
