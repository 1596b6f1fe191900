// A library for the export check's own test: stdlib_probe.map names these three as
// tests/abi/check-exports-stdlib-spellings describes.
#include <string>

std::string probeNamed(std::string value) {
    return value + ".";
}
std::string probeGlobbed(std::string value) {
    return value + ".";
}
// Returns a std::string its parameters do not mention: libstdc++ tags the name [abi:cxx11].
std::string probeTagged(int value) {
    return std::to_string(value);
}
