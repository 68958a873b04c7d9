// A recording read from a file, whole or as far as it goes.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "recordings/kestofile.h"
#include "tools/command.h"

struct LoadedRecording
{
	CRefPtr<CKestoFile> m_pFile; // null when the bytes could not be had at all
	std::string m_Path;          // as it was named
	int64_t m_nSize = 0;         // bytes

	bool m_bFailed = false;
	std::string m_Failure; // what the recording's reader was told, separated by line feeds
	int64_t m_nOffset = 0; // where the first of that was found

	int FrameCount() const { return m_pFile ? m_pFile->GetFrameCount() : 0; }

	// Fine when whole (a file of only the header too), Damage when it is damaged and has frames, Unusable otherwise.
	ExitStatus Status() const;
};

// Reads the file ("-" is standard input) with progress, and tells of damage by one line on the context's errors.
LoadedRecording LoadRecording( CommandContext &context, const std::string &path );

// The same from bytes in memory, silently.
LoadedRecording DecodeRecording( CommandContext &context, const std::string &path, std::span<const uint8_t> bytes );
