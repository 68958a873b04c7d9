#include <CLI/CLI.hpp>

#include <ostream>

#include "tools/commands.h"
#include "tools/csvwriter.h"
#include "tools/loadedrecording.h"
#include "tools/nodefigures.h"
#include "tools/progress.h"
#include "tools/text.h"

namespace
{
struct NodesOptions
{
	std::string m_File;
	std::string m_Output = "-";
	bool m_bCsv = true;
};

// One row per node of the tree, in its order.
class CNodeSheet
{
public:
	CNodeSheet( const CKestoFile &file, COutputFile &output, std::ostream *pTerminal, const std::string &label )
		: m_File( file )
		, m_Tree( file )
		, m_Totals( SumNodes( file, m_Tree ) )
		, m_Csv( output )
		, m_Progress( pTerminal, label, static_cast<int64_t>( m_Tree.Rows().size() ) )
	{
	}

	bool Write()
	{
		for ( const char *pHeading : { "id", "parent", "depth", "name", "path", "frames", "calls", "total_us",
				  "self_us", "mean_us", "median_us", "p95_us", "p99_us", "max_us", "max_frame" } )
			m_Csv.Text( pHeading );
		if ( !m_Csv.EndRow() )
			return false;
		CNodeGroups groups;
		for ( size_t i = 0; i < m_Tree.Rows().size(); i++ )
			groups.Add( m_Tree.Rows()[i].m_nNode, static_cast<int32_t>( i ) );
		bool bGood = true;
		VisitGroupTimes( m_File, groups,
			[&]( int32_t nRow, const CDistribution &times )
			{
				bGood = bGood && WriteRow( m_Tree.Rows()[static_cast<size_t>( nRow )], times );
				m_Progress.Show( nRow );
			} );
		return bGood;
	}

private:
	bool WriteRow( const CNodeTree::Row &row, const CDistribution &times )
	{
		const NodeTotals &totals = m_Totals[row.m_nNode];
		m_Csv.Integer( row.m_nNode );
		if ( row.m_nParentRow < 0 )
			m_Csv.Empty();
		else
			m_Csv.Integer( m_Tree.Rows()[static_cast<size_t>( row.m_nParentRow )].m_nNode );
		m_Csv.Integer( row.m_nDepth );
		m_Csv.Text( Latin1ToUtf8( m_Tree.Name( row ) ) );
		m_Csv.Text( Latin1ToUtf8( m_Tree.Path( row ) ) );
		m_Csv.Integer( totals.m_nFrames );
		m_Csv.Integer( totals.m_nCalls );
		m_Csv.Integer( totals.m_nTime );
		m_Csv.Integer( totals.m_nSelfTime );
		for ( const double flTime :
			{ times.Mean(), times.Median(), times.Percentile( 95.0 ), times.Percentile( 99.0 ) } )
			m_Csv.Number( flTime, 3 );
		const CKestoFile::Maximum maximum = m_File.GetMaximum( row.m_nNode );
		m_Csv.Integer( maximum.m_nTime );
		if ( maximum.m_nFrame < 0 )
			m_Csv.Empty();
		else
			m_Csv.Integer( maximum.m_nFrame );
		return m_Csv.EndRow();
	}

	const CKestoFile &m_File;
	const CNodeTree m_Tree;
	const CPagedList<NodeTotals> m_Totals;
	CCsvWriter m_Csv;
	CProgress m_Progress;
};

ExitStatus Nodes( CommandContext &context, const NodesOptions &options )
{
	const LoadedRecording recording = LoadRecording( context, options.m_File );
	if ( recording.Status() == ExitStatus::Unusable )
		return ExitStatus::Unusable;
	COutputFile output( context.m_Output );
	std::ostream *pTerminal = context.WritingProgress( options.m_Output );
	if ( output.Open( options.m_Output ) &&
		 CNodeSheet( *recording.m_pFile, output, pTerminal, "Writing " + options.m_Output ).Write() && output.Commit() )
		return recording.Status();
	context.m_Errors << output.Problem() << '\n';
	return ExitStatus::Unusable;
}
} // namespace

void AddNodesCommand( CLI::App &app, CommandContext &context )
{
	const auto pOptions = std::make_shared<NodesOptions>();
	CLI::App &command = AddCommand( app, context, "nodes", "Print a line of figures for each node",
		"kesto nodes run.kesto --csv > nodes.csv", [&context, pOptions] { return Nodes( context, *pOptions ); } );
	command.add_option( "FILE", pOptions->m_File, "The recording; - is standard input" )->required();
	command.add_flag( "--csv", pOptions->m_bCsv, "Comma-separated values (the only form)" );
	command.add_option( "-o,--output", pOptions->m_Output, "File to write; - is standard output (the default)" );
}
