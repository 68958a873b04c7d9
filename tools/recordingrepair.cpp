#include "tools/recordingrepair.h"

#include "recordings/kestomemoryreader.h"
#include "wire/recordingtokens.h"

namespace
{
constexpr char END_OF_FRAME = static_cast<char>( wire::RecordingToken::EndOfFrame );

// Hands out single fields and notes where frames begin: there, and only there, the parser asks how many bytes are left.
class CTracingReader final : public CKestoFile::CReader
{
public:
	CTracingReader( std::span<const uint8_t> bytes, const std::function<void( int64_t )> &progress )
		: m_Reader( bytes )
		, m_Progress( progress )
	{
	}

	void ReportFailure( const char *pMessage ) override
	{
		if ( m_bGood )
			m_nFailure = m_Reader.GetPosition();
		m_Reader.ReportFailure( pMessage );
		m_bGood = false;
	}

	int Read( void *pDestination, int nCount ) override
	{
		const int64_t nPosition = m_Reader.GetPosition();
		const int nRead = m_Reader.Read( pDestination, nCount );
		if ( nRead == 0 && m_bGood )
		{
			m_nFailure = nPosition;
			m_nFailedCount = nCount;
			m_bGood = false;
		}
		else if ( nRead == 4 )
		{
			m_nEarlierLongField = m_nLongField;
			m_nLongField = nPosition;
		}
		return nRead;
	}

	int64_t BytesLeft() const override
	{
		m_nFrameBegin = m_nFrameEnd;
		m_nFrameEnd = m_Reader.GetPosition();
		m_bFrameCut = !m_bGood;
		if ( m_Progress )
			m_Progress( m_nFrameEnd );
		return m_Reader.BytesLeft();
	}

	const std::string &FailureText() const { return m_Reader.GetFailureText(); }

	CKestoMemoryReader m_Reader;

	// Of the last frame that was parsed whole.
	mutable int64_t m_nFrameBegin = 0;
	mutable int64_t m_nFrameEnd = 0;
	mutable bool m_bFrameCut = false; // the bytes ended inside it

	int64_t m_nFailure = 0;
	int m_nFailedCount = 0;          // bytes of the field that was not there; 0 when the bytes themselves were wrong
	int64_t m_nLongField = 0;        // the last field of 4 bytes that was read
	int64_t m_nEarlierLongField = 0; // the one before it

private:
	const std::function<void( int64_t )> &m_Progress;
};

// The last frame counts although its bytes end too early: at a token, inside its header value, or inside the value or
// the id of a definition.
void EndCutFrame( const CTracingReader &reader, RecordingRepair &repair )
{
	repair.m_nLength = static_cast<size_t>( reader.m_nFailure );
	if ( reader.m_nFailedCount == 4 && reader.m_nFailure == reader.m_nFrameBegin + 1 )
		repair.m_Tail.assign( 4, '\0' ); // nobody reads the value
	else if ( reader.m_nFailedCount == 4 )
	{
		// Before the id stands the value, and before that the name, which ends in at least one byte.
		const bool bAtId = reader.m_nLongField + 4 == reader.m_nFailure;
		const int64_t nParent = bAtId ? reader.m_nEarlierLongField : reader.m_nLongField;
		repair.m_nLength = static_cast<size_t>( nParent - 1 ); // a definition begins with its token
	}
	repair.m_Tail += END_OF_FRAME;
}
} // namespace

RecordingRepair FindRepair( std::span<const uint8_t> bytes, const std::function<void( int64_t nPosition )> &progress )
{
	CTracingReader reader( bytes, progress );
	const auto pFile = CRefPtr<CKestoFile>::Adopt( new CKestoFile( reader ) );
	RecordingRepair repair;
	repair.m_nFrames = pFile->GetFrameCount();
	repair.m_bDamaged = !reader.m_bGood;
	repair.m_Failure = reader.FailureText();
	repair.m_nOffset = static_cast<size_t>( reader.m_nFailure );
	repair.m_nLength = bytes.size();
	if ( repair.m_bDamaged )
		repair.m_nLength = static_cast<size_t>( reader.m_nFrameEnd );
	if ( reader.m_bFrameCut && repair.m_nFrames > 0 )
		EndCutFrame( reader, repair );
	return repair;
}
