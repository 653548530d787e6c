#include "MakeClipboardSource.h"

#include "ThreadedClipboard.h"
#include "X11Clipboard.h"

std::unique_ptr<ClipboardSource> makeClipboardSource()
{
    return std::make_unique<ThreadedClipboard>(std::make_unique<X11Clipboard>());
}
