#pragma once

class QObject;

/// Keeps every window at its size in points when the dots per inch change at run time,
/// which is how desktops on X11 tell their text size. The toolkit then only paints on
/// another scale. For as long as the context lives; main thread.
void keepWindowsAtScale(QObject &context);
