#pragma once
// The opt-in support log. When the environment variable RAVLIN_LOG names a
// file (or a folder, where a file named by getLogFileName() is made), each
// line written here is appended there with a time stamp and the thread's id;
// without it nothing is written and a line costs one check. Lines never say
// what a code held: card tracks carry card numbers.
//
// A reader must never wait for the log: lines go through a bounded queue to
// one writer thread, which writes without blocking; a full queue, or a file
// that takes nothing (a FIFO nobody reads), drops lines and the log later
// says how many. The writer is joined when the library is unloaded.
#include <string>

namespace SupportLog {

bool enabled();
void write(const std::string& line) noexcept;
// "N bytes, digest D" for a delivered code in its Base64 form.
std::string describeCode(const std::wstring& base64);

}  // namespace SupportLog
