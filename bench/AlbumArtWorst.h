// The pictures that cost most among those that are decoded, and how soon those beyond are refused.
#pragma once

/// Prints a line a picture: milliseconds of processor time and what the process grew by at its peak.
void MeasureWorstPictures();
