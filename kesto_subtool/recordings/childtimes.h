// What the direct children of nodes take in one frame.
#pragma once

#include <cstdint>
#include <vector>

#include "recordings/kestofile.h"

// For whoever asks of all nodes: in a damaged recording many nodes may share one long chain of children, which is
// walked once here and not for each of them. The file and the frame must outlive it.
class CChildTimes
{
public:
	CChildTimes( const CKestoFile &file, const CKestoFile::CTickTimings &frame );

	// Microseconds, in wrapping 32-bit arithmetic; nNode is any int. The node's time less this is what
	// CKestoFile::GetExclusiveTime says.
	int32_t Of( int32_t nNode );

private:
	const CKestoFile &m_File;
	const CKestoFile::CTickTimings &m_Frame;
	std::vector<uint32_t> m_Chains; // by node id: the time of it and of all that follow it in its chain
	std::vector<bool> m_bKnown;     // by node id: m_Chains has it
	std::vector<int32_t> m_Unknown; // empty between the calls
};
