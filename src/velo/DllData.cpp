#include "velo/DllData.h"

bool DllData::InitExtensionModule(HINSTANCE a_module)
{
    if (a_module == nullptr || (m_module != nullptr && m_module != a_module))
        return false;
    m_module = a_module;
    return true;
}
