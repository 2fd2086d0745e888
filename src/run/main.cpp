#include "run/program.hpp"

int main(int count, char* arguments[]) {
    return kvr::runProgram(count, arguments);
}
