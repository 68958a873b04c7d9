// Runs kesto the way tests need it: as a function and as a program, on files in a folder of their own.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

struct KestoRun
{
	int m_nStatus = -1;
	std::string m_Output;
	std::string m_Errors;
};

// Within the test program. There is no terminal, so no progress.
KestoRun CallKesto( const std::vector<std::string> &arguments );

// Any program, with the bytes as its standard input. A program that a signal ended has 128 + its number as its status.
KestoRun RunProgram( const std::vector<std::string> &command, std::string_view input = {} );

// The built program.
KestoRun RunKestoProgram( std::vector<std::string> arguments, std::string_view input = {} );

// Goes with everything in it.
class CTestFolder
{
public:
	CTestFolder();
	~CTestFolder();
	CTestFolder( const CTestFolder & ) = delete;
	CTestFolder &operator=( const CTestFolder & ) = delete;

	std::string Path( const std::string &name ) const { return ( m_Path / name ).string(); }
	std::string Write( const std::string &name, const std::vector<uint8_t> &bytes ) const; // returns its path
	std::string Read( const std::string &name ) const;
	std::vector<std::string> Names() const; // ascending

private:
	std::filesystem::path m_Path;
};

std::vector<uint8_t> ToBytes( std::string_view text );
std::vector<std::string> SplitLines( const std::string &text );
