#include "exporter/Program.h"

int main(int argc, char *argv[])
{
    return ko::exporter::runProgram(argc, argv);
}
