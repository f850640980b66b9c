#pragma once
// Tramline settings of an AB line or curve, which ISO 11783-10 has no place
// for: copied onto the pattern as proprietary attributes.

#include "taskdata/task_data.h"

#include <QDir>
#include <QSettings>

// For each of "Tramline/MajorOffset", "Tramline/MinorOffset",
// "Tramline/ExtraOffset", "Tramline/Smoothing", "Tramline/Spacing",
// "Tramline/TrackWidth" and "Curve/ImplicitOffset" that the settings hold:
// the value as a number, in its own unit, as "P231_majorOffset",
// "P231_minorOffset", "P231_extraOffset", "P231_smoothing", "P231_spacing",
// "P231_trackWidth" and "P231_impOffset". The text is the shortest form of
// the number ("3" for 3.00); a value that is no number gives "0". A missing
// key writes nothing, so an attribute of a former run stays as it was.
void set_tramline_attributes(TC::Task_data::Elements::Client::Guidance_pattern pattern,
                             QSettings const& settings);

// set_tramline_attributes with the line directory's "Tramline/Tramline.ini",
// when there is one.
void import_tramlines(TC::Task_data::Elements::Client::Guidance_pattern pattern,
                      QDir const& line_dir);
