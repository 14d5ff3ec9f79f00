#include "host/commands/program.h"
#include "platform/process/process.h"

int main(int argc, char** argv) {
    return mvrtpfec::runProgram(platform::programArguments(argc, argv));
}
