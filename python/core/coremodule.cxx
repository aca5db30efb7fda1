#include <python/core/corelock.h>
#include <python/core/coremodule.h>

PYBIND11_MODULE(_core, pModule)
{
    pModule.attr("__version__") = QEX_VERSION;
    qexpython::WaitAtExit();
    qexpython::AddClip(pModule);
    qexpython::AddSteps(pModule);
    qexpython::AddFiles(pModule);
    qexpython::AddSaving(pModule);
}
