extern "C" __attribute__((visibility("default"))) int KalventoTestDependency();

int KalventoTestDependency()
{
    return 7;
}
