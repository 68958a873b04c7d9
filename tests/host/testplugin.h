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
	bool m_bAsksAboutDamage = false;  // OpenRecording asks first, and returns whether the answer was OK
	bool m_bOffersToGoOn = false;     // what it asks can be answered with OK
};

// Exported by every test module as "TestPlugin_GetRecord".
using TestPluginGetRecordFn = TestPluginRecord *(*)();
