// Licence: MIT, see LICENSE.
#include <quorvant/aemessaging/PortNames.h>
#include <servers/bootstrap.h>

#include <cstdio>
#include <cstring>
#include <new>
#include <string>

namespace {

std::string serialNumberPart(const ProcessSerialNumber& process) {
  char text[sizeof ".0123456789abcdef"];
  std::snprintf(text, sizeof text, ".%08lx%08lx", static_cast<unsigned long>(process.lowLongOfPSN),
                static_cast<unsigned long>(process.highLongOfPSN));
  return text;
}

std::string composeName(const char* base, const ProcessSerialNumber* process, const char* suffix,
                        int index) {
  std::string name = base;
  if (suffix != nullptr && *suffix != '\0') name.append(".").append(suffix);
  if (process != nullptr) name += serialNumberPart(*process);
  if (index >= 0) name.append(".").append(std::to_string(index));
  return name;
}

}  // namespace

SInt32 QRLAEMakePortName(char* dst, UInt32 dstSize, const char* base, bool addProcessSerialNumber,
                         const char* suffix, int index) try {
  SInt32 err = noErr;
  if (dst == nullptr || base == nullptr || *base == '\0') err = paramErr;
  ProcessSerialNumber process{};
  if (err == noErr && addProcessSerialNumber) err = GetCurrentProcess(&process);

  std::string name;
  if (err == noErr) {
    name = composeName(base, addProcessSerialNumber ? &process : nullptr, suffix, index);
  }
  if (name.size() >= dstSize) return paramErr;
  if (err == noErr) std::memcpy(dst, name.c_str(), name.size() + 1);
  return err;
} catch (const std::bad_alloc&) {
  return memFullErr;
}

bool IsBootstrapError(SInt32 err) {
  return err >= BOOTSTRAP_NOT_PRIVILEGED && err <= BOOTSTRAP_NO_MEMORY;
}
