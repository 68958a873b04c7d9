// What the views of the history are laid out from, beside the samples.
#pragma once

#include <QSize>
#include <cstdint>
#include <optional>

#include "views/historycolumns.h"

struct HistoryView
{
	QSize m_Size; // of the view's contents
	int m_nZoomStep = 0;
	HistoryColumns m_Columns;
	std::optional<uint32_t> m_Cursor; // the selected sample while the cursor is in force
};
