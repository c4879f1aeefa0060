#include "platform/CArchiveException.h"

// Defined here so that the class has one type information for the process, and is caught across libraries.
CArchiveException::~CArchiveException() = default;
