// A second reader of recordings, to compare with: written for plainness, byte by byte, every list a map.
#pragma once

#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <utility>
#include <vector>

class CKestoFile;

struct SlowRecording
{
	struct Node
	{
		std::string m_Name;
		int64_t m_nFirstChild = -1;
		int64_t m_nNextSibling = -1;
		int64_t m_nParent = -1;
		uint32_t m_nValue = 0;
	};
	using Figures = std::pair<uint32_t, uint32_t>; // calls, microseconds
	struct Frame
	{
		int64_t m_nLength = 0;
		std::map<int64_t, Figures> m_Entries;
	};

	bool m_bFailed = false;
	std::string m_Failure;
	int64_t m_nRoot = -1;
	int64_t m_nNodes = 0;
	std::map<int64_t, Node> m_Nodes;
	std::vector<std::pair<std::string, uint32_t>> m_Strings;
	std::vector<Frame> m_Frames;
	int64_t m_nStatistics = 0;
	std::map<int64_t, std::pair<int64_t, int64_t>> m_Maxima; // microseconds (signed), frame
	std::map<int64_t, Figures> m_Sums;
};

// What a reader in memory that nobody stops gives.
SlowRecording ReadSlowly( std::span<const uint8_t> bytes );

// The first thing in which the two differ, or an empty text. bFailed and failure are those of the reader that the file
// was made from.
std::string FindDifference(
	const CKestoFile &file, bool bFailed, const std::string &failure, const SlowRecording &expected );
