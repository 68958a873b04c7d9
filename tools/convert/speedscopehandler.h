// Takes what the JSON reader finds in a speedscope file.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "tools/convert/jsoninput.h"
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

	bool FoundProfiles() const { return !m_Profiles.empty(); }
	bool SpoolFailed() const { return m_bSpoolFailed; }

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
	void SetProfileMember( Profile &profile, std::string_view text );
	void SetEventMember( std::string_view text );
	uint32_t FrameName( std::string_view index );
	std::optional<int64_t> TimeOf( std::string_view text ) const;
	void BeginProfile();
	void EndProfile();
	void AddEvent();
	void AddSample();
	void AddWeight( std::string_view text );
	void EmitSample( uint32_t nStack, TraceEvent event, int64_t nOffset );
	void Add( const TraceEvent &event, int64_t nOffset );

	CJsonInput &m_Input;
	CTrace &m_Trace;
	CSampleWeight m_Weight;
	bool m_bEvents = false; // this is the second time
	bool m_bSpoolFailed = false;
	int m_nDepth = 0;
	std::array<Member, 8> m_Path{}; // by depth, the member at hand

	bool m_bHasFrames = false;          // the list of names was there
	std::vector<uint32_t> m_FrameNames; // NO_NAME where there is none
	std::vector<Profile> m_Profiles;
	size_t m_nProfile = 0; // at hand

	// The event at hand.
	int64_t m_nOffset = 0;
	char m_cType = '\0';
	uint32_t m_nName = NO_NAME;
	std::optional<int64_t> m_nTime;

	// Samples and weights are two lists, whichever comes first waits for the other.
	uint32_t m_nThread = 0;
	uint32_t m_nStack = CStackTable::EMPTY_STACK; // of the sample at hand
	bool m_bGoodStack = true;
	std::vector<uint32_t> m_Stacks;
	std::vector<TraceEvent> m_Weights;
	size_t m_nStacks = 0; // that were read
	size_t m_nWeights = 0;
	int64_t m_nWeightsOffset = 0; // of their list; inside a number the reader works on a copy of the input
	int64_t m_nNow = 0;           // where the next sample begins
};
} // namespace convert
