#pragma once

#include <string>

/// The JSON document that a command takes: a file, or standard input for "-". At most 10 million bytes.
/// @throws FileError, RefusedError
std::string ReadJsonInput(const std::string &file);
