// The file of a recording while it is written.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string>

namespace showbudget
{
// Bytes are only ever appended, and in whole pieces: a piece that cannot be written to its end is cut off again where
// the file allows it. May also be a pipe or a device; these are waited for, until giveUp returns true.
class CRecordingFile
{
public:
	CRecordingFile() = default;
	~CRecordingFile();
	CRecordingFile( const CRecordingFile & ) = delete;
	CRecordingFile &operator=( const CRecordingFile & ) = delete;

	// Opens the file and empties it; with bNew, it must not exist. False, and why in `error`, when that fails or when
	// another recording, of any process, is writing it.
	bool Open( const std::string &path, bool bNew, std::string &error );
	// False when it failed, with the reason in `error`, or was given up, with none.
	bool Append( std::span<const uint8_t> piece, const std::function<bool()> &giveUp, std::string &error );
	void Close();

	uint64_t Size() const { return m_nSize; } // bytes of whole pieces

private:
	bool Lock( std::string &error );
	// Whether the file takes more before it is given up.
	bool WaitForRoom( const std::function<bool()> &giveUp ) const;
	void CutOff() const;

	int m_nFile = -1;
	uint64_t m_nSize = 0;
};
} // namespace showbudget
