#include "platform/DialogTemplates.h"
#include "platform/DialogIds.h"
#include "platform/WindowStyles.h"
#include "support/Testing.h"

#include <dlfcn.h>

namespace {

constexpr DialogControl S_controls[] = {
    {.id = IDC_STATIC, .kind = EControlStatic, .rectangle = {0, 0, 50, 10}, .text = L"Nazwa:"},
    {.id = IDC_STATIC, .kind = EControlStatic, .rectangle = {0, 10, 50, 20}, .text = L"Wartość:"},
    {.id = IDOK, .kind = EControlButton, .rectangle = {0, 20, 50, 40}, .text = L"OK", .isDefault = true},
};
constexpr DialogControl S_sameIds[] = {{.id = 5, .kind = EControlEdit, .rectangle = {}},
                                       {.id = 5, .kind = EControlEdit, .rectangle = {}}};
constexpr DialogControl S_twoDefaults[] = {
    {.id = 1, .kind = EControlButton, .rectangle = {}, .isDefault = true},
    {.id = 2, .kind = EControlButton, .rectangle = {}, .isDefault = true}};
constexpr DialogTemplate S_table[] = {
    {.number = 310, .rectangle = {0, 0, 200, 100}, .caption = L"Zarządzaj", .controls = S_controls},
    {.number = 311, .rectangle = {}, .controls = {}, .name = L"Arkusz"},
};

} // namespace

TEST(DialogTemplatesTest, AreFoundInTheirModuleWhileTheTableStands)
{
    const auto here = reinterpret_cast<HINSTANCE>(const_cast<DialogTemplate*>(S_table));
    const auto elsewhere = static_cast<HINSTANCE>(::dlsym(RTLD_DEFAULT, "gnu_get_libc_version"));
    ASSERT_NE(elsewhere, nullptr);
    {
        const DialogTemplates table(S_table);
        EXPECT_EQ(DialogTemplates::Find(nullptr, 310), &S_table[0]) << "null is the executable";
        EXPECT_EQ(DialogTemplates::Find(here, 311), &S_table[1]);
        EXPECT_EQ(DialogTemplates::Find(here, L"Arkusz"), &S_table[1]);
        EXPECT_EQ(DialogTemplates::Find(here, L""), nullptr) << "the first has no name";
        EXPECT_EQ(DialogTemplates::Find(here, 312), nullptr);
        EXPECT_EQ(DialogTemplates::Find(elsewhere, 310), nullptr);

        static constexpr DialogTemplate S_faults[] = {
            {.number = 0, .rectangle = {}, .controls = {}},
            {.number = 1, .rectangle = {}, .controls = S_sameIds},
            {.number = 2, .rectangle = {}, .controls = S_twoDefaults},
            {.number = 310, .rectangle = {}, .controls = {}}};
        for (const DialogTemplate& fault : S_faults)
            EXPECT_THROW(DialogTemplates({&fault, 1}), std::invalid_argument) << fault.number;
    }
    EXPECT_EQ(DialogTemplates::Find(here, 310), nullptr);
}
