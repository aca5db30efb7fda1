#include <bench/benchsupport.h>

int main(int pCount, char** pArguments)
{
    benchmark::Initialize(&pCount, pArguments);
    if (benchmark::ReportUnrecognizedArguments(pCount, pArguments))
    {
        return 2;
    }
    RegisterBenchmarks();
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
