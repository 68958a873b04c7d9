// A file that appears only when it is whole.
#pragma once

#include <iosfwd>
#include <string>
#include <string_view>

// What is written goes to a file of a temporary name beside the wanted one, which is renamed by Commit once it is on
// the disk; a file of that name that existed before keeps its bytes until then, and its permissions for good. A
// symbolic link stays one: the file that it leads to is replaced, or made where it leads to none. Where the name is
// something else than a file (a pipe, a device), and for "-", which is standard output, bytes are written straight
// away.
class COutputFile
{
public:
	explicit COutputFile( std::ostream &standardOutput );
	~COutputFile(); // without a Commit nothing is left behind
	COutputFile( const COutputFile & ) = delete;
	COutputFile &operator=( const COutputFile & ) = delete;

	// Once. False when it fails, as for the two below; Problem() then says what and where.
	bool Open( const std::string &path );

	bool Write( std::string_view bytes );

	// Ends the file. Nothing can be written after it.
	bool Commit();

	// One line as errorline.h makes it.
	const std::string &Problem() const { return m_Problem; }

private:
	bool OpenTemporary();
	bool WriteBuffer();
	bool WriteToDisk();
	bool Fail( const std::string &what );
	void Discard();

	std::ostream &m_StandardOutput;
	std::string m_Path;          // as it was named
	std::string m_Target;        // with links followed
	std::string m_TemporaryPath; // empty when bytes go straight out
	std::string m_Buffer;
	std::string m_Problem;
	int m_nFile = -1;
	bool m_bStandardOutput = false;
};

// From now on a signal that ends the process (SIGINT, SIGTERM, SIGHUP) also removes the temporary file of the one
// output that may be open. For the program's main; programs that call the library otherwise may have handlers of their
// own. A file that grows beyond what the user may write (SIGXFSZ) becomes an error of Write.
void RemoveTemporaryFileOnSignals();
