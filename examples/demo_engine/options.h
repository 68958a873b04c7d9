// The command line.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace demo
{
struct Options
{
	uint16_t m_nPort = 27190;
	std::string m_Address = "127.0.0.1";
	std::string m_Name = "demo engine";
	uint32_t m_nBodies = 2500;
	std::optional<uint64_t> m_nFrames; // none runs until it is told to end
	std::string m_Recording;           // file; empty for none
	std::string m_Picture;             // file; empty for none
	bool m_bHelp = false;
};

// None, and a line in `error`, when an argument is wrong.
std::optional<Options> ParseOptions( int nArguments, char **ppArguments, std::string &error );
const char *Usage();
} // namespace demo
