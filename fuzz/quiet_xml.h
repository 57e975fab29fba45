#pragma once

/// Ends the process if libxml2 prints anything from now on: the library must prevent its output.
void forbid_xml_output();
