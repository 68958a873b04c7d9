#include <CLI/CLI.hpp>

#include "tools/commands.h"
#include "tools/jsonwriter.h"
#include "tools/loadedrecording.h"
#include "tools/outputfile.h"
#include "tools/progress.h"

namespace
{
constexpr size_t FLUSH_SIZE = 1 << 16; // bytes of text that are kept before they are written

struct DumpOptions
{
	std::string m_File;
	std::string m_Output = "-";
};

// The keys of every object are written in ascending order.
class CDump
{
public:
	CDump( const LoadedRecording &recording, COutputFile &output, CProgress &progress )
		: m_Recording( recording )
		, m_File( *recording.m_pFile )
		, m_Output( output )
		, m_Progress( progress )
	{
	}

	bool Write()
	{
		m_Json.BeginObject();
		m_Json.Key( "failed" ).Bool( m_Recording.m_bFailed );
		m_Json.Key( "failure" ).Text( m_Recording.m_Failure );
		WriteFrames();
		WriteMaxima();
		WriteNodes();
		m_Json.Key( "root" ).Integer( m_File.GetRootNode() );
		WriteStrings();
		WriteSums();
		m_Json.EndObject();
		m_Text += '\n';
		Flush();
		return m_bGood;
	}

private:
	void Flush()
	{
		m_bGood = m_bGood && m_Output.Write( m_Text );
		m_Text.clear();
	}
	void FlushWhenLong()
	{
		if ( m_Text.size() > FLUSH_SIZE )
			Flush();
	}

	template <typename A, typename B>
	void WritePair( A nFirst, B nSecond )
	{
		m_Json.BeginArray();
		m_Json.Integer( nFirst );
		m_Json.Integer( nSecond );
		m_Json.EndArray();
		FlushWhenLong();
	}

	void WriteFrames()
	{
		m_Json.Key( "frames" ).BeginArray();
		for ( int i = 0; i < m_File.GetFrameCount() && m_bGood; i++ )
		{
			const CKestoFile::CTickTimings &frame = *m_File.GetFrame( i );
			m_Json.BeginArray();
			for ( int32_t nNode = 0; nNode < frame.GetCount() && m_bGood; nNode++ )
			{
				const CKestoFile::CTickTimings::Entry entry = frame.PeekEntry( nNode );
				WritePair( entry.m_nCalls, entry.m_nTime );
			}
			m_Json.EndArray();
			FlushWhenLong();
			m_Progress.Show( i );
		}
		m_Json.EndArray();
	}

	void WriteMaxima()
	{
		m_Json.Key( "maxima" ).BeginArray();
		for ( int32_t i = 0; i < m_File.GetStatisticsCount(); i++ )
			WritePair( m_File.GetMaximum( i ).m_nTime, m_File.GetMaximum( i ).m_nFrame );
		m_Json.EndArray();
	}

	void WriteNodes()
	{
		m_Json.Key( "nodes" ).BeginArray();
		for ( int32_t i = 0; i < m_File.GetNodeCount(); i++ )
		{
			m_Json.BeginObject();
			m_Json.Key( "first_child" ).Integer( m_File.GetNodeFirstChild( i ) );
			m_Json.Key( "name" ).Text( m_File.GetNodeName( i ) );
			m_Json.Key( "next_sibling" ).Integer( m_File.GetNodeNextSibling( i ) );
			m_Json.Key( "parent" ).Integer( m_File.GetNodeParent( i ) );
			m_Json.Key( "value" ).Integer( m_File.GetNodeValue( i ) );
			m_Json.EndObject();
			FlushWhenLong();
		}
		m_Json.EndArray();
	}

	void WriteStrings()
	{
		m_Json.Key( "strings" ).BeginArray();
		for ( const CKestoFile::TableString &string : m_File.GetStringTable() )
		{
			m_Json.BeginObject();
			m_Json.Key( "text" ).Text( string.m_pText );
			m_Json.Key( "value" ).Integer( string.m_nValue );
			m_Json.EndObject();
			FlushWhenLong();
		}
		m_Json.EndArray();
	}

	void WriteSums()
	{
		m_Json.Key( "sums" ).BeginArray();
		for ( int32_t i = 0; i < m_File.GetStatisticsCount(); i++ )
			WritePair( m_File.GetSum( i ).m_nCalls, m_File.GetSum( i ).m_nTime );
		m_Json.EndArray();
	}

	const LoadedRecording &m_Recording;
	const CKestoFile &m_File;
	COutputFile &m_Output;
	CProgress &m_Progress; // of the frames
	std::string m_Text;
	CJsonWriter m_Json{ m_Text };
	bool m_bGood = true;
};

ExitStatus Dump( CommandContext &context, const DumpOptions &options )
{
	const LoadedRecording recording = LoadRecording( context, options.m_File );
	if ( !recording.m_pFile )
		return ExitStatus::Unusable;
	COutputFile output( context.m_Output );
	CProgress progress(
		context.WritingProgress( options.m_Output ), "Writing " + options.m_Output, recording.FrameCount() );
	if ( output.Open( options.m_Output ) && CDump( recording, output, progress ).Write() && output.Commit() )
		return recording.Status();
	context.m_Errors << output.Problem() << '\n';
	return ExitStatus::Unusable;
}
} // namespace

void AddDumpCommand( CLI::App &app, CommandContext &context )
{
	const auto pOptions = std::make_shared<DumpOptions>();
	CLI::App &command = AddCommand( app, context, "dump", "Print everything that a recording holds as JSON",
		"kesto dump run.kesto | python3 -m json.tool", [&context, pOptions] { return Dump( context, *pOptions ); } );
	command.add_option( "FILE", pOptions->m_File, "The recording; - is standard input" )->required();
	command.add_option( "-o,--output", pOptions->m_Output, "File to write; - is standard output (the default)" );
}
