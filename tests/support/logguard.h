// Fails a test that logs a warning or an error which it did not announce.
#pragma once

#include <string>
#include <vector>

// While one lives, warnings and errors are collected instead of failing the test; what nobody looked at fails it at the
// end. The innermost one collects.
class CExpectWarnings
{
public:
	CExpectWarnings();
	~CExpectWarnings();
	CExpectWarnings( const CExpectWarnings & ) = delete;
	CExpectWarnings &operator=( const CExpectWarnings & ) = delete;

	// The texts so far, oldest first; they count as looked at.
	std::vector<std::string> Take();

private:
	friend void RecordWarning( const std::string &text );

	std::vector<std::string> m_Texts;
	CExpectWarnings *m_pOuter;
};

// Called once by a test program's main.
void InstallLogGuard();

// Hands a text to the innermost collector or fails the running test. For other sources of warnings (Qt's messages).
void RecordWarning( const std::string &text );
