// A provider that saves a history, operations and settings, each on a thread of its own, round after round and for ever.
// What is saved is reported once the save has returned.
#include "contract_kit/TestProvider.h"
#include "kills/SavedContents.h"
#include "modules/IModuleRegistry.h"
#include "modules/PluginDescription.h"
#include "platform/FileTools.h"
#include "support/Testing.h"

#include <unistd.h>

namespace {

struct Task {
    std::filesystem::path folder;
    int reports = -1;
    std::uint32_t first = 0;

    // The process ends by a failed save, which the test then sees.
    void SaveForEver(EFile a_file,
                     const std::function<bool(const std::filesystem::path&, std::uint32_t)>& a_save) const
    {
        for (std::uint32_t number = first;; ++number) {
            if (!a_save(folder / S_names[a_file], number))
                _exit(2);
            const std::array<std::uint32_t, 2> message = {a_file, number};
            if (write(reports, message.data(), sizeof(message)) != sizeof(message))
                _exit(1);
        }
    }
};

bool SaveHistory(const std::filesystem::path& a_path, std::uint32_t a_number)
{
    std::error_code failure;
    return FileTools::ReplaceFile(a_path, BytesOf(MakeHistory(a_number)), failure);
}
bool SaveOperations(const std::filesystem::path& a_path, std::uint32_t a_number)
{
    HistoryOperations operations;
    if (!operations.Parse(MakeOperations(a_number)))
        return false;
    operations.Save(a_path.wstring());
    return true;
}
bool SaveSettings(const std::filesystem::path& a_path, std::uint32_t a_number)
{
    return MakeSettings(a_number).SaveToFile(a_path.wstring(), "Root");
}

class SavingProvider : public TestProvider {
public:
    explicit SavingProvider(Task a_task) : TestProvider(L"Saving"), m_task(std::move(a_task)) {}
    ~SavingProvider() override
    {
        for (std::thread& thread : m_threads)
            thread.join();
    }
    bool Init() override
    {
        m_threads[0] = std::thread([this] { m_task.SaveForEver(EHistory, &SaveHistory); });
        m_threads[1] = std::thread([this] { m_task.SaveForEver(EOperations, &SaveOperations); });
        m_threads[2] = std::thread([this] { m_task.SaveForEver(ESettings, &SaveSettings); });
        return true;
    }

private:
    const Task m_task;
    std::array<std::thread, 3> m_threads;
};

void CreateModules(IModuleRegistry& a_registry, const Settings& a_options)
{
    const Task task{static_cast<std::wstring>(a_options["Folder"]), static_cast<int>(a_options["Reports"]),
                    static_cast<std::uint32_t>(a_options["First"])};
    a_registry.AddProvider(std::make_unique<SavingProvider>(task));
}

} // namespace

KALVENTO_PLUGIN("saving_modules", "1.0", &CreateModules)
