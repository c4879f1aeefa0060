// Without the symbol of a plug-in; one build of it needs a library that isn't found at run time.
extern "C" int KalventoTestDependency();
extern "C" __attribute__((visibility("default"))) int KalventoTestDependent();

int KalventoTestDependent()
{
#ifdef TEST_DEPENDS
    return KalventoTestDependency();
#else
    return 8;
#endif
}
