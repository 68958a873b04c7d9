// Recordings that between them have everything a recording can have.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

struct CorpusRecording
{
	std::string m_Name;
	std::vector<uint8_t> m_Bytes;
};

std::vector<CorpusRecording> MakeRecordingCorpus();

// Made of random records; the same seed gives the same bytes.
std::vector<uint8_t> MakeRandomRecording( uint32_t nSeed );
