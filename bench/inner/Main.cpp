#include "framework/Main.h"

int main(int argc, char** argv) { return Bench::RunBenchmarks(argc, argv); }
