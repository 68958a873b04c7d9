// Takes what the JSON reader finds in a Chrome trace.
#pragma once

#include <optional>
#include <string>

#include "tools/convert/jsoninput.h"
#include "tools/convert/trace.h"

namespace convert
{
// The values of the two forms: an array of events, and an object with the events in "traceEvents".
class CChromeHandler : public rapidjson::BaseReaderHandler<rapidjson::UTF8<>, CChromeHandler>
{
public:
	CChromeHandler( CJsonInput &input, CTrace &trace );

	bool Key( const char *pText, rapidjson::SizeType nLength, bool bCopy );
	bool String( const char *pText, rapidjson::SizeType nLength, bool bCopy );
	bool RawNumber( const char *pText, rapidjson::SizeType nLength, bool bCopy );
	bool StartObject();
	bool EndObject( rapidjson::SizeType nMembers );
	bool StartArray();
	bool EndArray( rapidjson::SizeType nElements );

	// After damage: what comes next is an event, whatever came before.
	void ExpectEvent();

	bool FoundEvents() const { return m_bFoundEvents; } // the list of events began
	bool InEvents() const { return m_nListDepth > 0; }
	bool IsBetweenEvents() const { return InEvents() && m_nDepth == m_nListDepth; }
	int64_t EventOffset() const { return m_nOffset; } // of the event that began last
	bool SpoolFailed() const { return m_bSpoolFailed; }

private:
	enum class Field
	{
		Other,
		Phase,
		Name,
		Time,
		Duration,
		Process,
		Thread,
		Arguments
	};
	enum class Argument
	{
		Other,
		Name,
		Calls
	};
	enum class TopKey
	{
		Other,
		Events,
		Kesto
	};

	static Field FieldOf( std::string_view key );
	bool Open();
	void Scalar( std::string_view text, bool bString );
	void SetField( std::string_view text, bool bString );
	void BeginEvent();
	void EndEvent();
	void AddMetadata();
	void AddEvent( EventKind kind );

	CJsonInput &m_Input;
	CTrace &m_Trace;
	const uint32_t m_nProcessNameId; // the names of the metadata events
	const uint32_t m_nThreadNameId;

	int m_nDepth = 0;
	int m_nListDepth = 0; // depth inside the list of events; 0 outside of it
	bool m_bFoundEvents = false;
	bool m_bSpoolFailed = false;
	TopKey m_TopKey = TopKey::Other;
	bool m_bFrameKey = false; // the key in the object of this program

	// The event at hand.
	int64_t m_nOffset = 0;
	Field m_Field = Field::Other;
	Argument m_Argument = Argument::Other;
	char m_cPhase = '\0';
	uint32_t m_nName = NO_NAME;
	uint32_t m_nCalls = 1;
	std::optional<int64_t> m_nTime; // nanoseconds
	std::optional<int64_t> m_nDuration;
	bool m_bDuration = false; // there is one, whether it is a number or not
	std::string m_Process;
	std::string m_Thread;
	std::string m_ArgumentName;
};
} // namespace convert
