// Recordings as tests of the target library read them.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "recordings/kestofile.h"
#include "recordings/refptr.h"

// A file name in a folder of its own that vanishes with the object.
class CTemporaryFolder
{
public:
	CTemporaryFolder();
	~CTemporaryFolder();
	CTemporaryFolder( const CTemporaryFolder & ) = delete;
	CTemporaryFolder &operator=( const CTemporaryFolder & ) = delete;

	std::string File( const std::string &name ) const { return m_Path + '/' + name; }
	const std::string &Path() const { return m_Path; }

private:
	std::string m_Path;
};

std::vector<uint8_t> ReadBytes( const std::string &path );
void WriteBytes( const std::string &path, const std::vector<uint8_t> &bytes );

// A recording whose nodes are named by their path from the frame, like "Frame/Outer/Inner".
class CRecordingFileOfTest
{
public:
	// With bWhole, the file must be readable to its last byte. A slow second reader must agree on everything in any
	// case.
	explicit CRecordingFileOfTest( const std::vector<uint8_t> &bytes, bool bWhole = true );

	struct Figures
	{
		uint32_t m_nCalls = 0;
		uint32_t m_nTime = 0; // microseconds

		friend bool operator==( const Figures &, const Figures & ) = default;
	};
	int FrameCount() const { return m_pFile->GetFrameCount(); }
	// By path; only what is not 0.
	std::map<std::string, Figures> Frame( int nFrame ) const;
	Figures At( int nFrame, const std::string &path ) const;
	// Calls of all frames.
	std::map<std::string, uint64_t> Calls() const;
	// The names in the order of the node's chain of children.
	std::vector<std::string> Children( const std::string &path ) const;
	const std::map<std::string, int32_t> &Nodes() const { return m_Nodes; }
	const CKestoFile &File() const { return *m_pFile; }

private:
	CRefPtr<CKestoFile> m_pFile;
	std::map<std::string, int32_t> m_Nodes;
};
