// Licence: MIT, see LICENSE.
// What a process tells the others about itself, and its form on disk: the same bytes whatever the
// writer's word size and byte order.
#ifndef PLATFORM_PROCESSES_PROCESSRECORD_H
#define PLATFORM_PROCESSES_PROCESSRECORD_H

#include <CarbonCore/MacTypes.h>

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace platform::processes {

/// The signature of a program that states none: four question marks.
inline constexpr OSType kUnknownSignature = 0x3F3F3F3F;

struct ProcessRecord {
  SInt32 pid = 0;
  SInt32 launcher = 0;  // its parent's process ID when it checked in
  UInt32 launchTicks = 0;
  OSType type = 'APPL';
  OSType signature = kUnknownSignature;
  std::string name;  // UTF-8 as far as the host's file names are
  std::string path;

  friend bool operator==(const ProcessRecord&, const ProcessRecord&) = default;
};

/// No record is longer; a path that would make it so is left out.
inline constexpr std::size_t kMaximumRecordSize = 8192;

std::vector<std::byte> encodeRecord(const ProcessRecord& record);

/// The record in the bytes of a file, or nothing unless they are one from the first to the last.
std::optional<ProcessRecord> decodeRecord(std::span<const std::byte> bytes);

/// The folder of the application that a program belongs to: Name.app when the program is
/// Name.app/Contents/FOLDER/PROGRAM, else nothing.
std::optional<std::string> applicationFolder(std::string_view programPath);

/// The name that a program runs under: its application's without the suffix, else the file's.
std::string processName(std::string_view programPath);

/// Reads type and signature out of the contents of an application's PkgInfo file. False, and
/// nothing changed, if it has not eight bytes at least.
bool readPackageInfo(std::span<const std::byte> contents, ProcessRecord& record);

}  // namespace platform::processes

#endif
