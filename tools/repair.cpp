#include <CLI/CLI.hpp>

#include <ostream>

#include "tools/commands.h"
#include "tools/errorline.h"
#include "tools/inputfile.h"
#include "tools/outputfile.h"
#include "tools/progress.h"
#include "tools/recordingrepair.h"

namespace
{
struct RepairOptions
{
	std::string m_Input;
	std::string m_Output;
};

RecordingRepair FindRepairWithProgress(
	CommandContext &context, const std::string &path, std::span<const uint8_t> bytes )
{
	CProgress progress( context.m_pProgress, "Decoding " + path, static_cast<int64_t>( bytes.size() ) );
	return FindRepair( bytes, [&progress]( int64_t nPosition ) { progress.Show( nPosition ); } );
}

ExitStatus Repair( CommandContext &context, const RepairOptions &options )
{
	std::vector<uint8_t> bytes;
	if ( const std::string problem = ReadInputFile( context, options.m_Input, bytes ); !problem.empty() )
	{
		context.m_Errors << FormatErrorLine( options.m_Input, {}, problem ) << '\n';
		return ExitStatus::Unusable;
	}
	const RecordingRepair repair = FindRepairWithProgress( context, options.m_Input, bytes );
	if ( repair.m_bDamaged )
		context.m_Errors << FormatErrorLine( options.m_Input, static_cast<int64_t>( repair.m_nOffset ),
								repair.m_Failure + "; frames kept: " + std::to_string( repair.m_nFrames ) )
						 << '\n';
	if ( repair.m_bDamaged && repair.m_nFrames == 0 )
		return ExitStatus::Unusable;
	COutputFile output( context.m_Output );
	const std::string_view text( reinterpret_cast<const char *>( bytes.data() ), repair.m_nLength );
	if ( !output.Open( options.m_Output ) || !output.Write( text ) || !output.Write( repair.m_Tail ) ||
		 !output.Commit() )
	{
		context.m_Errors << output.Problem() << '\n';
		return ExitStatus::Unusable;
	}
	return repair.m_bDamaged ? ExitStatus::Damage : ExitStatus::Fine;
}
} // namespace

void AddRepairCommand( CLI::App &app, CommandContext &context )
{
	const auto pOptions = std::make_shared<RepairOptions>();
	CLI::App &command = AddCommand( app, context, "repair", "Write the frames that could be read to a whole recording",
		"kesto repair crashed.kesto whole.kesto", [&context, pOptions] { return Repair( context, *pOptions ); } );
	command.add_option( "IN", pOptions->m_Input, "The damaged recording; - is standard input" )->required();
	command.add_option( "OUT", pOptions->m_Output, "File to write, which may be IN; - is standard output" )->required();
}
