// Takes what the JSON reader finds in a speedscope file.
#pragma once

#include <array>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "tools/convert/jsoninput.h"
#include "tools/convert/samplepairs.h"
#include "tools/convert/sampleweight.h"
#include "tools/convert/trace.h"

namespace convert
{
// A file is read twice: first for what is needed to understand the events, names and units, which may stand behind
// them; then for the events. Every profile becomes a thread.
class CSpeedscopeHandler : public rapidjson::BaseReaderHandler<rapidjson::UTF8<>, CSpeedscopeHandler>
{
public:
	CSpeedscopeHandler( CJsonInput &input, CTrace &trace, const ImportOptions &options )
		: m_Input( input )
		, m_Trace( trace )
		, m_Weight( options )
		, m_Pairs( trace.m_Spool.Folder(), trace.m_Spool.RunEvents() )
	{
	}

	void BeginEvents(); // the second time
	void EndEvents();   // the input ended, wherever that was

	bool Key( const char *pText, rapidjson::SizeType nLength, bool bCopy );
	bool String( const char *pText, rapidjson::SizeType nLength, bool bCopy );
	bool RawNumber( const char *pText, rapidjson::SizeType nLength, bool bCopy );
	bool StartObject();
	bool EndObject( rapidjson::SizeType nMembers );
	bool StartArray();
	bool EndArray( rapidjson::SizeType nElements );

	bool FoundProfiles() const { return m_nProfiles > 0; }
	bool SpoolFailed() const { return !SpoolProblem().empty(); }
	const std::string &SpoolProblem() const
	{
		return m_Pairs.Problem().empty() ? m_Trace.m_Spool.Problem() : m_Pairs.Problem();
	}

private:
	enum class Member
	{
		Other,
		Kesto,
		Shared,
		Frames,
		Profiles,
		Name,
		Type,
		Unit,
		StartValue,
		Events,
		Samples,
		Weights,
		Frame,
		At
	};
	struct Profile
	{
		std::string m_Name;
		int m_nUnit = MICROSECONDS;
		bool m_bTime = false; // the unit is one of time
		std::string m_Start;  // where its time begins, in its unit
	};

	static Member MemberOf( std::string_view key );
	bool Open();
	bool Scalar( std::string_view text );
	bool IsIn( Member first, Member third ) const { return m_Path[1] == first && m_Path[3] == third; }
	void SetProfileMember( std::string_view text );
	const Profile &ProfileAtHand() const;
	void SetEventMember( std::string_view text );
	uint32_t FrameName( std::string_view index );
	std::optional<int64_t> TimeOf( std::string_view text ) const;
	void BeginProfile();
	void EndProfile();
	void AddEvent();
	void AddSample();
	void AddWeight( std::string_view text );
	void EmitSample( TraceEvent sample, int64_t nOffset );

	CJsonInput &m_Input;
	CTrace &m_Trace;
	CSampleWeight m_Weight;
	bool m_bEvents = false; // this is the second time
	int m_nDepth = 0;
	std::array<Member, 8> m_Path{}; // by depth, the member at hand

	bool m_bHasFrames = false;            // the list of names was there
	std::vector<uint32_t> m_FrameNames;   // NO_NAME where there is none
	std::map<size_t, Profile> m_Profiles; // those that say something of themselves
	size_t m_nProfiles = 0;
	size_t m_nProfile = 0; // at hand

	// The event at hand.
	int64_t m_nOffset = 0;
	char m_cType = '\0';
	uint32_t m_nName = NO_NAME;
	std::optional<int64_t> m_nTime;

	CSamplePairs m_Pairs;
	uint32_t m_nThread = 0;
	uint32_t m_nStack = CStackTable::EMPTY_STACK; // of the sample at hand
	bool m_bGoodStack = true;
	int64_t m_nWeightsOffset = 0; // of their list; inside a number the reader works on a copy of the input
	int64_t m_nNow = 0;           // where the next sample begins
};
} // namespace convert
