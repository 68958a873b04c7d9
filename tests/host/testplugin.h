// What the test modules tell the tests.
#pragma once

#include <string>
#include <vector>

struct TestPluginRecord
{
	std::vector<std::string> m_Calls; // in order, since the test cleared them
	int m_nKeptNumber = 0;            // "number" of the settings that were loaded last
	int m_nSamples = 0;               // chunks received
	bool m_bTakesRecordings = true;   // what OpenRecording of its windows returns
};

// Exported by every test module as "TestPlugin_GetRecord".
using TestPluginGetRecordFn = TestPluginRecord *(*)();
