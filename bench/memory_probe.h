#pragma once

namespace qmbench {

// The bench started again as a child process that opens one category and
// tells its memory: a fresh process, so that nothing the benchmarks before it
// allocated is counted or reused.
inline constexpr const char* kMemoryProbeArg = "--memory-probe";

// Child side: argv = exe, kMemoryProbeArg, data folder, floppy root. Starts the
// program there, selects the first category and prints
// "<VmRSS before> <VmHWM before> <VmRSS after> <VmHWM after> <grid rows>", sizes in kB.
int memoryProbeMain(int argc, char** argv);

} // namespace qmbench
