// Loads a recording on behalf of a window, and asks there about a damaged one.
#pragma once

#include "recordings/kestofile.h"

class QString;
class QWidget;

// The file's recording, or null when there is none or the user does not want what is left of it. Runs events; null also
// when the parent went meanwhile.
CRefPtr<CKestoFile> LoadRecording( QWidget *pParent, const QString &fileName );
