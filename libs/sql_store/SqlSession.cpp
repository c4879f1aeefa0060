#include "sql_store/SqlSession.h"

#include "platform/CodePage.h"
#include "platform/Descriptors.h"
#include "provider_kit/DamagedData.h"
#include "sql_store/SqlRowForm.h"
#include "sql_store/SqlSchema.h"
#include "velo/Log.h"

#include <algorithm>
#include <array>
#include <stdexcept>
#include <utility>

namespace {

constexpr std::size_t S_mostReaders = 4;

} // namespace

/// Collects the payloads of one channel.
class SqlSession::Receiver : public pqxx::notification_receiver {
public:
    Receiver(pqxx::connection_base& a_connection, const char* a_channel)
        : pqxx::notification_receiver(a_connection, a_channel)
    {}

    void operator()(const std::string& a_payload, int /*a_backend*/) override
    {
        m_payloads.insert(a_payload);
    }
    std::set<std::string> Take() { return std::exchange(m_payloads, {}); }

private:
    std::set<std::string> m_payloads;
};

SqlSession::SqlSession(SqlAddress a_address, SqlPauses a_pauses, IMarketStoreListener& a_listener)
    : m_address(std::move(a_address)),
      m_pauses(a_pauses),
      m_listener(a_listener),
      m_interrupt(std::make_shared<SqlInterrupt>()),
      m_pause(a_pauses.shortest)
{
    m_thread = std::thread([this] { Run(); });
}

SqlSession::~SqlSession()
{
    Close();
}

void SqlSession::Close()
{
    {
        const std::lock_guard lock(m_mutex);
        m_closing = true;
    }
    m_changed.notify_all();
    m_interrupt->Interrupt();
    if (m_thread.joinable())
        m_thread.join();
    SetConnected(false);
}

void SqlSession::Run()
{
    if (m_address.IsEmpty()) {
        TellBroken("nie wskazano bazy");
        return;
    }
    while (!m_interrupt->IsInterrupted()) {
        const auto begin = std::chrono::steady_clock::now();
        try {
            Listen();
        } catch (...) {
            SetConnected(false);
            if (m_interrupt->IsInterrupted())
                return;
            TellBroken(SqlRowForm::ReasonInFlight());
        }
        // Only a connection that lasted resets the pause: a server that accepts and fails at once isn't hammered.
        if (std::chrono::steady_clock::now() - begin > m_pauses.longest)
            m_pause = m_pauses.shortest;
        Pause();
    }
}

void SqlSession::Listen()
{
    SqlConnection connection(m_address, m_interrupt, SqlConnection::EReading);
    SqlSchema::Ensure(connection);
    // An event from before this connection says nothing about it.
    m_breakOff.Lower();
    // Listen first, then read everything: what comes in between is announced twice and not missed.
    Receiver rows(connection, SqlSchema::S_channelRows);
    Receiver instruments(connection, SqlSchema::S_channelInstruments);
    const auto changes =
        pqxx::nontransaction(connection).exec1("SELECT changes FROM state")[0].as<std::int64_t>();
    const bool changed = m_changes >= 0 && m_changes != changes;
    m_changes = changes;
    m_isins.clear();

    SetConnected(true);
    m_brokenTold = false;
    VeloTools::Log::Instance().Write("SqlSession::Listen", __LINE__,
                                     "Połączono z bazą "_cp1250 +
                                         SqlRowForm::ToLogText(m_address.GetDescription()));
    m_listener.Restored();
    if (changed)
        m_listener.InstrumentsChanged();
    while (!m_interrupt->IsInterrupted()) {
        // Before the wait: some may have come together with answers to statements.
        connection.get_notifs();
        const bool instrumentsChanged = !instruments.Take().empty();
        if (instrumentsChanged) {
            m_isins.clear();
            m_changes =
                pqxx::nontransaction(connection).exec1("SELECT changes FROM state")[0].as<std::int64_t>();
            m_listener.InstrumentsChanged();
        }
        const std::set<std::string> numbers = rows.Take();
        for (const std::string& number : numbers) {
            const std::string isin = FindIsin(connection, number);
            if (!isin.empty() && !m_interrupt->IsInterrupted())
                m_listener.RowsAdded(isin);
        }
        if (!instrumentsChanged && numbers.empty())
            WaitForServer(connection.sock());
    }
}

void SqlSession::WaitForServer(int a_socket) const
{
    std::array<kalvento::internal::Descriptors::Awaited, 3> awaited = {
        {{a_socket}, {m_interrupt->GetFd()}, {m_breakOff.GetFd()}}};
    kalvento::internal::Descriptors::WaitForAny(awaited, std::nullopt);
    if (awaited[2].isReady)
        throw std::runtime_error("Nie udało się odczytać danych z bazy"_cp1250);
}

std::string SqlSession::FindIsin(SqlConnection& a_connection, const std::string& a_number)
{
    const auto known = m_isins.find(a_number);
    if (known != m_isins.end())
        return known->second;
    // As text: anybody may notify with anything.
    const pqxx::result found =
        pqxx::nontransaction(a_connection)
            .exec_params("SELECT isin FROM instruments WHERE number::text = $1", a_number);
    if (found.empty())
        return {};
    try {
        return m_isins[a_number] = SqlRowForm::ReadName(found[0][0]);
    } catch (const DamagedData&) {
        return {}; // left out, which ReadInstruments has told
    }
}

void SqlSession::TellBroken(const std::string& a_reason)
{
    if (std::exchange(m_brokenTold, true))
        return;
    const std::string text = m_address.IsEmpty()
                                 ? a_reason
                                 : "Brak połączenia z bazą "_cp1250 +
                                       SqlRowForm::ToLogText(m_address.GetDescription()) + ": " + a_reason;
    VeloTools::Log::Instance().Write("SqlSession::TellBroken", __LINE__, text);
    m_listener.Broken(CodePage::Cp1250ToWide(text));
}

void SqlSession::Pause()
{
    std::unique_lock lock(m_mutex);
    m_changed.wait_for(lock, m_pause, [this] { return m_closing; });
    m_pause = std::min(m_pause * 2, m_pauses.longest);
}

void SqlSession::SetConnected(bool a_connected)
{
    std::vector<std::unique_ptr<SqlConnection>> old; // closed outside of the lock
    {
        const std::lock_guard lock(m_mutex);
        m_connected = a_connected;
        ++m_era;
        old.swap(m_idle);
    }
    m_changed.notify_all();
}

void SqlSession::BreakOff()
{
    m_breakOff.Raise();
}

std::unique_ptr<SqlConnection> SqlSession::TakeConnection(std::uint64_t& a_era)
{
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this] { return m_closing || !m_connected || m_inUse < S_mostReaders; });
    if (m_closing || !m_connected)
        throw std::runtime_error("Brak połączenia z bazą"_cp1250);
    ++m_inUse;
    a_era = m_era;
    if (m_idle.empty())
        return nullptr;
    auto connection = std::move(m_idle.back());
    m_idle.pop_back();
    return connection;
}

void SqlSession::GiveBack(std::unique_ptr<SqlConnection> a_connection, std::uint64_t a_era)
{
    {
        const std::lock_guard lock(m_mutex);
        --m_inUse;
        if (a_connection && m_connected && a_era == m_era)
            m_idle.push_back(std::move(a_connection));
    }
    m_changed.notify_all();
}

void SqlSession::Read(const Reading& a_reading)
{
    std::uint64_t era = 0;
    auto connection = TakeConnection(era);
    try {
        if (!connection)
            connection = std::make_unique<SqlConnection>(m_address, m_interrupt, SqlConnection::EReading);
        pqxx::nontransaction transaction(*connection);
        a_reading(transaction);
    } catch (...) {
        const std::string reason = SqlRowForm::ReasonInFlight();
        if (SqlRowForm::IsDamageInFlight()) {
            // The next reading, of other rows, will work: a break would affect everybody.
            GiveBack(std::move(connection), era);
            throw DamagedData(reason);
        }
        connection.reset();
        GiveBack(nullptr, era);
        {
            const std::lock_guard lock(m_mutex);
            // The break has already answered a failure from before it.
            if (era == m_era)
                BreakOff();
        }
        throw std::runtime_error(reason);
    }
    GiveBack(std::move(connection), era);
}
