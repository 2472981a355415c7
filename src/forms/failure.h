#pragma once
#include <stdexcept>
#include <string>

namespace forms {

// A run-time error of a control, a port or a file operation. Procedures catch it
// once, at their end, and take their failure path from there.
class Failure : public std::runtime_error {
public:
    explicit Failure(const std::string& what) : std::runtime_error(what) {}
};

// The end of a file met by a read: the ordinary way a category file ends.
class EndOfFile : public Failure {
public:
    EndOfFile() : Failure("input past end of file") {}
};

} // namespace forms
