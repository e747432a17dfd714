#pragma once

/// The whole exported interface.
///
/// A host fills a ticket (job/job_ticket.h), prints it, and may stop it through its thread
/// (printing/printing_thread.h). It saves and loads tickets with an archive
/// (platform/mfc/archive.h). A program with settings, directories or translations of its own
/// installs them first (platform/host/host.h); one with a document implements the interfaces that
/// the same header names, and imports and conversions then build objects in it.

#include "rastrel/cfm/directories.h"
#include "rastrel/conversion/cut_data.h"
#include "rastrel/conversion/page_size.h"
#include "rastrel/imports/xml_import.h"
#include "rastrel/job/job_ticket.h"
#include "rastrel/job/status.h"
#include "rastrel/job/vk_job_ticket.h"
#include "rastrel/platform/host/application.h"
#include "rastrel/platform/host/base_dir.h"
#include "rastrel/platform/host/color.h"
#include "rastrel/platform/host/contour_cut.h"
#include "rastrel/platform/host/document_values.h"
#include "rastrel/platform/host/generic_item.h"
#include "rastrel/platform/host/graphics_io.h"
#include "rastrel/platform/host/host.h"
#include "rastrel/platform/host/object_store.h"
#include "rastrel/platform/host/paragraph.h"
#include "rastrel/platform/host/placed_graphics.h"
#include "rastrel/platform/host/plane_reader.h"
#include "rastrel/platform/host/plate_object.h"
#include "rastrel/platform/host/rect.h"
#include "rastrel/platform/host/selected_object_list.h"
#include "rastrel/platform/host/settings.h"
#include "rastrel/platform/host/sheet_layer.h"
#include "rastrel/platform/host/smart_double.h"
#include "rastrel/platform/host/spot_match.h"
#include "rastrel/platform/host/text_compose.h"
#include "rastrel/platform/host/tm.h"
#include "rastrel/platform/host/stream.h"
#include "rastrel/platform/host/translation.h"
#include "rastrel/platform/host/view.h"
#include "rastrel/platform/host/world.h"
#include "rastrel/platform/mfc/archive.h"
#include "rastrel/platform/mfc/date_time.h"
#include "rastrel/platform/mfc/file.h"
#include "rastrel/platform/mfc/object.h"
#include "rastrel/platform/mfc/string.h"
#include "rastrel/platform/mfc/sync.h"
#include "rastrel/platform/mfc/window.h"
#include "rastrel/printing/printing_thread.h"
#include "rastrel/printing/test_print.h"
#include "rastrel/psscan/ps_parser.h"
