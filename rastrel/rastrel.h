#pragma once

/// The whole exported interface: the one header that a host includes.
///
/// Where to begin:
///
/// - To print: fill a ticket (job/job_ticket.h), call its `PrintJob`, poll its status
///   (job/status.h), and call `EndPrint`. The ticket's thread (printing/printing_thread.h) stops
///   it. `rastrel::job::CheckPrintFiles` (job/print_check.h) says beforehand whether the files of a
///   print can be written. A program that prints needs nothing else: without a host of its own it
///   has the standalone host, with settings and a queue below the data root.
/// - To keep jobs: save and load tickets with an archive (platform/mfc/archive.h).
/// - To use settings, directories or translations of your own: derive from
///   `rastrel::host::Host` (platform/host/host.h), and call `SetHost` before all else.
/// - To import templates, or convert: let that host return a database, a text engine and an
///   application as well (platform/host/object_store.h, text_compose.h, application.h).
///   docs/host.md is the guide. The importers are in imports/, the readers of lists and charts in
///   readers/.
/// - To show progress: let it return views for dialogs (platform/host/dialogs.h), your own or the
///   windows of platform/standalone/window_views.h.
///
/// Values that pass both ways (colors, rectangles, matrices, text records) are in platform/values,
/// the framework's types in platform/mfc. Operations of the host are called on its user interface
/// thread unless their header says otherwise.

#include "rastrel/cfm/directories.h"
#include "rastrel/conversion/bitmap/convert_ps_to_bmp.h"
#include "rastrel/conversion/bitmap/queue_program.h"
#include "rastrel/conversion/cut/generate_cut_data.h"
#include "rastrel/conversion/cut_data.h"
#include "rastrel/conversion/page_size.h"
#include "rastrel/conversion/separation/separation_objects.h"
#include "rastrel/imports/bright_star_xml_import.h"
#include "rastrel/imports/cr2/cr2_file_import.h"
#include "rastrel/imports/cr2/cr2_file_import_vers2.h"
#include "rastrel/imports/cro_file_import.h"
#include "rastrel/imports/llx_file_import.h"
#include "rastrel/imports/xml_file_import.h"
#include "rastrel/imports/xml_import.h"
#include "rastrel/job/job_ticket.h"
#include "rastrel/job/print_check.h"
#include "rastrel/job/status.h"
#include "rastrel/job/vk_job_ticket.h"
#include "rastrel/platform/host/application.h"
#include "rastrel/platform/host/base_dir.h"
#include "rastrel/platform/host/contour_cut.h"
#include "rastrel/platform/host/dialogs.h"
#include "rastrel/platform/host/generic_item.h"
#include "rastrel/platform/host/graphics_io.h"
#include "rastrel/platform/host/host.h"
#include "rastrel/platform/host/object_store.h"
#include "rastrel/platform/host/placed_graphics.h"
#include "rastrel/platform/host/plane_reader.h"
#include "rastrel/platform/host/plate_object.h"
#include "rastrel/platform/host/selected_object_list.h"
#include "rastrel/platform/host/settings.h"
#include "rastrel/platform/host/sheet_layer.h"
#include "rastrel/platform/host/text_compose.h"
#include "rastrel/platform/host/translation.h"
#include "rastrel/platform/host/view.h"
#include "rastrel/platform/mfc/archive.h"
#include "rastrel/platform/mfc/date_time.h"
#include "rastrel/platform/mfc/file.h"
#include "rastrel/platform/mfc/object.h"
#include "rastrel/platform/mfc/string.h"
#include "rastrel/platform/mfc/sync.h"
#include "rastrel/platform/mfc/window.h"
#include "rastrel/platform/standalone/window_views.h"
#include "rastrel/platform/values/bitmap_header.h"
#include "rastrel/platform/values/color.h"
#include "rastrel/platform/values/document_values.h"
#include "rastrel/platform/values/paragraph.h"
#include "rastrel/platform/values/poly_reference.h"
#include "rastrel/platform/values/rect.h"
#include "rastrel/platform/values/smart_double.h"
#include "rastrel/platform/values/spot_match.h"
#include "rastrel/platform/values/stream.h"
#include "rastrel/platform/values/tm.h"
#include "rastrel/platform/values/world.h"
#include "rastrel/printing/printing_thread.h"
#include "rastrel/printing/test_print.h"
#include "rastrel/psscan/ps_parser.h"
#include "rastrel/readers/car_data.h"
#include "rastrel/readers/charts.h"
#include "rastrel/readers/job_notes.h"
#include "rastrel/readers/ms_excel_xml_import.h"
#include "rastrel/readers/open_office_xml_import.h"
