#include "tools/loadedrecording.h"

#include <ostream>

#include "recordings/kestomemoryreader.h"
#include "tools/errorline.h"
#include "tools/inputfile.h"
#include "tools/progress.h"

namespace
{
// Remembers where the first failure was, and shows progress.
class CProgressReader final : public CKestoMemoryReader
{
public:
	CProgressReader( std::span<const uint8_t> bytes, CProgress &progress )
		: CKestoMemoryReader( bytes )
		, m_Progress( progress )
	{
	}

	void ReportFailure( const char *pMessage ) override
	{
		if ( m_bGood )
			m_nFailureOffset = GetPosition();
		CKestoMemoryReader::ReportFailure( pMessage );
	}

	int64_t m_nFailureOffset = 0;

protected:
	void OnProgress( int64_t nPosition ) override { m_Progress.Show( nPosition ); }

private:
	CProgress &m_Progress;
};
} // namespace

ExitStatus LoadedRecording::Status() const
{
	if ( m_pFile && !m_bFailed )
		return ExitStatus::Fine;
	return FrameCount() > 0 ? ExitStatus::Damage : ExitStatus::Unusable;
}

LoadedRecording DecodeRecording( CommandContext &context, const std::string &path, std::span<const uint8_t> bytes )
{
	LoadedRecording recording;
	recording.m_Path = path;
	recording.m_nSize = static_cast<int64_t>( bytes.size() );
	CProgress progress( context.m_pProgress, "Decoding " + path, recording.m_nSize );
	CProgressReader reader( bytes, progress );
	recording.m_pFile = CRefPtr<CKestoFile>::Adopt( new CKestoFile( reader ) );
	recording.m_bFailed = !reader.m_bGood;
	recording.m_Failure = reader.GetFailureText();
	recording.m_nOffset = reader.m_nFailureOffset;
	return recording;
}

LoadedRecording LoadRecording( CommandContext &context, const std::string &path )
{
	std::vector<uint8_t> bytes;
	if ( const std::string problem = ReadInputFile( context, path, bytes ); !problem.empty() )
	{
		context.m_Errors << FormatErrorLine( path, {}, problem ) << '\n';
		LoadedRecording recording;
		recording.m_Path = path;
		return recording;
	}
	LoadedRecording recording = DecodeRecording( context, path, bytes );
	if ( recording.m_bFailed )
		context.m_Errors << FormatErrorLine( path, recording.m_nOffset,
								recording.m_Failure + "; frames kept: " + std::to_string( recording.FrameCount() ) )
						 << '\n';
	return recording;
}
