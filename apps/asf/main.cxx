#include <apps/asf/asfprogram.h>

int main(int pArgumentCount, char** pArguments)
{
    return asfapp::RunProgram(pArgumentCount, pArguments);
}
