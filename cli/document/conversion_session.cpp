#include "cli/document/conversion_session.h"

#include "cli/console/exit_status.h"
#include "cli/console/stop_signals.h"
#include "cli/converting/queue_diagnosis.h"
#include "cli/installation/installation.h"
#include "rastrel/platform/host/host.h"
#include "rastrel/platform/os/pipe.h"
#include "rastrel/platform/os/terminal.h"

namespace rastrel::cli {
namespace {

// Somebody must be there to answer.
void CheckAnswers(const ConversionRequest& request) {
  if (!request.ask) return;
  if (!os::IsTerminalDevice(os::StandardHandle(os::StandardStream::Input)) ||
      !os::IsTerminalDevice(os::StandardHandle(os::StandardStream::Error)))
    throw CommandError(ExitStatus::WrongUse,
                       "--ask: input and standard error are not both a terminal");
}

ResultPlace CheckedPlace(const Invocation& invocation, const ConversionRequest& request,
                         const InputFile& input) {
  CheckAnswers(request);
  return PlaceOfResult(invocation, request.result, input);
}

}  // namespace

// The views exist before the signals, whose first one cancels whatever they show.
ConversionSession::ConversionSession(const Invocation& invocation)
    : m_Request(OrEnd(ExitStatus::WrongUse, ReadConversionRequest(invocation))),
      m_Pdf(OrEnd(ExitStatus::WrongUse, ApplyPdfOptions(invocation, m_Request))),
      m_Views(m_Request.json),
      m_Signals(
          OrEnd(ExitStatus::JobFailed, TakeStopSignals([this](int) { m_Views.RequestStop(); }))),
      m_Place(MakeDirectory()),
      m_Input(m_Place.Inspect(invocation)),
      m_Target(CheckedPlace(invocation, m_Request, m_Input)),
      m_Host(m_Request.window || m_Request.ask) {
  host::SetHost(&m_Host);
  m_Host.SetDialogViews(&m_Views);
}

ConversionSession::~ConversionSession() { host::SetHost(nullptr); }

JobDirectory ConversionSession::MakeDirectory() {
  OrEnd(ExitStatus::NotInstalled, MakeSureOfDataRoot());
  OrEnd(ExitStatus::NotInstalled, CheckQueueProgram());
  if (m_Request.window) OrEnd(ExitStatus::NotInstalled, m_Views.UseWindow());
  return OrEnd(ExitStatus::NotInstalled, JobDirectory::Create(false));
}

ConversionReport ConversionSession::End(ConversionEnd end) {
  m_Place.LeaveRipDirectory();
  return {end, m_Views, m_Place};
}

void ConversionSession::Write(const ConvertedObjects& objects) {
  ConversionResult(m_Host, objects, m_Place).Write(m_Request.result, m_Target, m_Input);
}

}  // namespace rastrel::cli
