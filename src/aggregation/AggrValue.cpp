#include "aggregation/AggrValue.h"

#include "platform/CodePage.h"
#include "time/KalventoException.h"

void AggrValue::RaiseNoMainType(const char* a_place)
{
    throw KalventoException(a_place, __LINE__,
                            "Wyjątek AggrValue! Niedozwolony typ agregacji na pierwszym polu."_cp1250);
}

void AggrValue::RaiseMainType(const char* a_place)
{
    throw KalventoException(a_place, __LINE__,
                            "Wyjątek AggrValue! Niedozwolony typ agregacji na polu zwykłym."_cp1250);
}

void AggrValue::RaiseUnknownType(const char* a_place)
{
    throw KalventoException(a_place, __LINE__, "Wyjątek AggrValue! Nieznany typ agregacji"_cp1250);
}
