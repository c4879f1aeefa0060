#include "support/PostgresCluster.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <grp.h>
#include <libpq-fe.h>
#include <netinet/in.h>
#include <pwd.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <pqxx/pqxx>
#include <sstream>
#include <stdexcept>
#include <thread>
#include <vector>

namespace {

namespace fs = std::filesystem;

// Debian keeps the programs of the server out of the search path.
fs::path FindPrograms()
{
    for (const char* folder : {"/usr/lib/postgresql/17/bin", "/usr/lib/postgresql/16/bin",
                               "/usr/lib/postgresql/15/bin", "/usr/local/bin", "/usr/bin"}) {
        if (fs::exists(fs::path(folder) / "initdb") && fs::exists(fs::path(folder) / "postgres"))
            return folder;
    }
    return {};
}

std::string FreePort()
{
    const int probe = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    auto* plain = reinterpret_cast<sockaddr*>(&address);
    const bool found = ::bind(probe, plain, size) == 0 && ::getsockname(probe, plain, &size) == 0;
    ::close(probe);
    if (!found)
        throw std::runtime_error("no free port");
    return std::to_string(ntohs(address.sin_port));
}

std::vector<pid_t> ChildrenOf(pid_t a_parent)
{
    const std::string process = std::to_string(a_parent);
    std::ifstream children("/proc/" + process + "/task/" + process + "/children");
    return {std::istream_iterator<pid_t>(children), {}};
}

} // namespace

PostgresCluster* PostgresCluster::Get()
{
    static const std::unique_ptr<PostgresCluster> S_cluster =
        FindPrograms().empty() ? nullptr : std::make_unique<PostgresCluster>();
    return S_cluster.get();
}

PostgresCluster::PostgresCluster() : m_port(FreePort())
{
    const std::string folder = m_folder.GetPath();
    if (const passwd* user = ::geteuid() == 0 ? ::getpwnam("postgres") : nullptr)
        if (::chown(folder.c_str(), user->pw_uid, user->pw_gid) != 0)
            throw std::runtime_error("the server's user can't have " + folder);
    Run((FindPrograms() / "initdb").string() + " -D " + folder +
        "/data -A trust -U postgres -E UTF8 --locale=C.UTF-8 --no-sync");
    m_folder.Append(
        "data/postgresql.conf",
        "listen_addresses = '127.0.0.1'\nport = " + m_port + "\nunix_socket_directories = '" + folder +
            "'\nmax_connections = 60\nshared_buffers = 16MB\nrecovery_init_sync_method = syncfs\n");
    Start();
}

PostgresCluster::~PostgresCluster()
{
    Kill();
}

// As the user who may run the server, with all output in a file of the folder.
void PostgresCluster::Run(const std::string& a_command) const
{
    const std::string prefix = ::geteuid() == 0 ? "runuser -u postgres -- " : "";
    const std::string log = m_folder.Path("run.log");
    if (std::system(("cd / && " + prefix + a_command + " >" + log + " 2>&1 </dev/null").c_str()) != 0)
        throw std::runtime_error(a_command + ": " + TemporaryFolder::ReadFile(log));
}

void PostgresCluster::Start()
{
    const std::string program = (FindPrograms() / "postgres").string();
    const std::string data = m_folder.Path("data");
    const std::string log = m_folder.Path("server.log");
    const passwd* user = ::geteuid() == 0 ? ::getpwnam("postgres") : nullptr;
    const uid_t uid = user ? user->pw_uid : ::geteuid();
    const gid_t gid = user ? user->pw_gid : ::getegid();
    while (!Answers()) {
        // Not up yet; or gone, because a process of the server before it still held its memory.
        if (m_server < 0 || ::waitpid(m_server, nullptr, WNOHANG) == m_server) {
            m_server = ::fork();
            if (m_server == 0) {
                if (user && (::setgroups(0, nullptr) != 0 || ::setgid(gid) != 0 || ::setuid(uid) != 0))
                    ::_exit(1);
                ::prctl(PR_SET_PDEATHSIG, SIGQUIT);
                // No buffered output: what this program has not written yet would be written twice.
                const int output = ::open(log.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0600);
                if (output < 0 || ::dup2(output, STDOUT_FILENO) < 0 || ::dup2(output, STDERR_FILENO) < 0)
                    ::_exit(1);
                ::execl(program.c_str(), program.c_str(), "-D", data.c_str(), nullptr);
                ::_exit(1);
            }
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
}

bool PostgresCluster::Answers() const
{
    return m_server > 0 && ::PQping(Connection("postgres").c_str()) == PQPING_OK;
}

std::string PostgresCluster::Connection(const std::string& a_database) const
{
    return "host=127.0.0.1 port=" + m_port + " user=postgres dbname=" + a_database;
}

std::string PostgresCluster::NewDatabase()
{
    const std::string name = "test" + std::to_string(++m_databases);
    pqxx::connection connection(Connection("postgres"));
    pqxx::nontransaction(connection).exec("CREATE DATABASE " + name);
    return Connection(name);
}

void PostgresCluster::Signal(int a_signal) const
{
    if (m_server < 0)
        return;
    // The children first are those of a server that makes no more of them.
    if (a_signal == SIGKILL)
        ::kill(m_server, SIGSTOP);
    const std::vector<pid_t> children = ChildrenOf(m_server);
    ::kill(m_server, a_signal);
    for (const pid_t child : children)
        ::kill(child, a_signal);
}

void PostgresCluster::Kill()
{
    Signal(SIGKILL);
    if (m_server > 0)
        ::waitpid(m_server, nullptr, 0);
    m_server = -1;
}

void PostgresCluster::StopAtOnce()
{
    ::kill(m_server, SIGQUIT);
    ::waitpid(m_server, nullptr, 0);
    m_server = -1;
}

void PostgresCluster::Freeze()
{
    Signal(SIGSTOP);
}

void PostgresCluster::Thaw()
{
    Signal(SIGCONT);
}
