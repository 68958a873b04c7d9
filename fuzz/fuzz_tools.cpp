// Runs every command of kesto that reads a recording, in this process, on whatever bytes come. What they print of the
// same file must agree with the model and with each other.
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <sstream>
#include <string>
#include <vector>

#include "recordings/kestomemoryreader.h"
#include "require.h"
#include "tools/command.h"

namespace
{
constexpr int64_t MAX_DUMPED = 200000; // a dump has an entry for each node of each frame, however short the file is

struct Model
{
	explicit Model( std::span<const uint8_t> bytes )
		: m_Reader( bytes )
		, m_pFile( CRefPtr<CKestoFile>::Adopt( new CKestoFile( m_Reader ) ) )
	{
	}

	int FrameCount() const { return m_pFile->GetFrameCount(); }
	bool IsWhole() const { return m_Reader.m_bGood; }
	ExitStatus Status() const
	{
		if ( IsWhole() )
			return ExitStatus::Fine;
		return FrameCount() > 0 ? ExitStatus::Damage : ExitStatus::Unusable;
	}
	int64_t EntryCount() const
	{
		int64_t nEntries = m_pFile->GetNodeCount() + m_pFile->GetStatisticsCount();
		for ( int i = 0; i < FrameCount(); i++ )
			nEntries += m_pFile->GetFrame( i )->GetCount();
		return nEntries;
	}

	CKestoMemoryReader m_Reader;
	CRefPtr<CKestoFile> m_pFile;
};

struct Run
{
	ExitStatus m_Status;
	std::string m_Output;
};

Run Call( std::vector<const char *> arguments )
{
	arguments.insert( arguments.begin(), "kesto" );
	std::ostringstream output;
	std::ostringstream errors;
	CommandContext context{ output, errors, nullptr };
	const ExitStatus status = RunKesto( static_cast<int>( arguments.size() ), arguments.data(), context );
	const std::string problems = errors.str();
	Require( problems.empty() || problems.back() == '\n', "problems are lines" );
	Require( problems.empty() == ( status == ExitStatus::Fine ), "a problem is told, and only a problem" );
	return { status, output.str() };
}

int64_t CountLines( const std::string &text )
{
	return std::count( text.begin(), text.end(), '\n' );
}

// A file without a name, so that nothing touches a disk.
class CMemoryFile
{
public:
	explicit CMemoryFile( std::span<const uint8_t> bytes )
		: m_nFile( memfd_create( "recording", 0 ) )
		, m_Path( "/proc/self/fd/" + std::to_string( m_nFile ) )
	{
		const auto nWritten = bytes.empty() ? 0 : write( m_nFile, bytes.data(), bytes.size() );
		Require( nWritten == static_cast<ssize_t>( bytes.size() ), "the input could be written" );
	}
	~CMemoryFile() { close( m_nFile ); }
	CMemoryFile( const CMemoryFile & ) = delete;
	CMemoryFile &operator=( const CMemoryFile & ) = delete;

	const char *Path() const { return m_Path.c_str(); }

private:
	int m_nFile;
	std::string m_Path;
};

void CheckFigures( const Model &model, const char *pPath )
{
	Require( Call( { "info", pPath } ).m_Status == model.Status(), "info judges as the model does" );
	Require( Call( { "info", pPath, "--json" } ).m_Status == model.Status(), "info --json does, too" );
	const Run frames = Call( { "frames", pPath } );
	Require( frames.m_Status == model.Status(), "frames judges as the model does" );
	Require( frames.m_Status == ExitStatus::Unusable || CountLines( frames.m_Output ) == model.FrameCount() + 1,
		"there is a line for each frame" );
	Require( Call( { "nodes", pPath } ).m_Status == model.Status(), "nodes judges as the model does" );
	if ( model.EntryCount() <= MAX_DUMPED )
		Require( Call( { "dump", pPath } ).m_Status == model.Status(), "dump judges as the model does" );
}

void CheckComparison( const Model &model, const char *pPath )
{
	const Run run = Call( { "compare", pPath, pPath, "--json", "--min-change", "0.000001" } );
	const bool bFrames = model.FrameCount() > 0;
	Require( run.m_Status == ( bFrames ? model.Status() : ExitStatus::Unusable ), "compare judges as the model does" );
	Require( !bFrames || run.m_Output.ends_with( "\"nodes\":[]}\n" ), "a recording does not differ from itself" );
	const Run check = Call( { "check", pPath, "--frame", "<=2147483.647", "--percentile", "100" } );
	Require( check.m_Status == ( bFrames ? model.Status() : ExitStatus::Unusable ), "no frame is longer than can be" );
}

void CheckRepair( const Model &model, const char *pPath )
{
	const Run run = Call( { "repair", pPath, "-" } );
	Require( run.m_Status == model.Status(), "repair judges as the model does" );
	if ( run.m_Status == ExitStatus::Unusable )
		return;
	const Model repaired( { reinterpret_cast<const uint8_t *>( run.m_Output.data() ), run.m_Output.size() } );
	Require( repaired.IsWhole(), "what was repaired is whole" );
	Require( repaired.FrameCount() == model.FrameCount(), "and has the same frames" );
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput( const uint8_t *pData, size_t nSize )
{
	const std::span<const uint8_t> bytes( pData, nSize );
	const Model model( bytes );
	const CMemoryFile file( bytes );
	CheckFigures( model, file.Path() );
	CheckComparison( model, file.Path() );
	CheckRepair( model, file.Path() );
	return 0;
}
