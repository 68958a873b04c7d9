#include "tools/convert/importers.h"
#include "tools/convert/speedscopehandler.h"

namespace convert
{
bool ImportSpeedscope( CInputStream &input, CTrace &trace, const ImportOptions &options, ImportProblem &problem )
{
	CJsonInput stream( input );
	CSpeedscopeHandler handler( stream, trace, options );
	rapidjson::Reader reader;
	reader.Parse<JSON_FLAGS>( stream, handler );
	if ( !handler.FoundProfiles() )
	{
		problem = {
			"no list of profiles", reader.HasParseError() ? static_cast<int64_t>( reader.GetErrorOffset() ) : -1 };
		return false;
	}
	input.SetLimit( INT64_MAX );
	if ( !stream.Rewind() )
	{
		problem.m_Text = "speedscope files are read twice, which a pipe cannot be";
		return false;
	}
	handler.BeginEvents();
	reader.Parse<JSON_FLAGS>( stream, handler );
	if ( handler.SpoolFailed() )
		problem.m_Text = handler.SpoolProblem();
	else if ( !input.Problem().empty() )
		problem = { input.Problem(), input.Position() };
	if ( !problem.m_Text.empty() )
		return false;
	if ( reader.HasParseError() )
	{
		if ( stream.IsCut() )
			trace.m_Report.Add( Repair::Cut, stream.Position() );
		else
			trace.m_Report.Add( Repair::Unreadable, static_cast<int64_t>( reader.GetErrorOffset() ),
				rapidjson::GetParseError_En( reader.GetParseErrorCode() ) );
		handler.EndEvents();
	}
	if ( trace.m_Report.IsDamaged() && trace.m_Spool.Count() == 0 )
		problem = { "no event could be read", 0 };
	return problem.m_Text.empty();
}
} // namespace convert
