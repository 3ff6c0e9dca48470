#include <utility>

#include "gui/platform/cocoa_view.h"

// Runs a panel when the event under way is over, and is gone afterwards.
@interface NoravaPanelRunner1 : NSObject {
  @public
    NoravaPanelView1* view;
    norava::FileDialogRequest* request;
    norava::FileChosen* chosen;
    NSString* title;
    NSString* text;
}
- (void)askForFile;
- (void)showMessage;
@end

@implementation NoravaPanelRunner1

- (void)dealloc {
    delete request;
    delete chosen;
    [view release];
    [title release];
    [text release];
    [super dealloc];
}

- (void)askForFile {
    using norava::cocoa::Text;
    NSSavePanel* const panel = request->save ? [NSSavePanel savePanel] : [NSOpenPanel openPanel];
    NSMutableArray* const types = [NSMutableArray array];
    for (const std::string& extension : request->extensions)
        [types addObject:Text(extension)];
    [panel setTitle:Text(request->title)];
    if ([types count] > 0) [panel setAllowedFileTypes:types];
    [panel setDirectoryURL:[NSURL fileURLWithPath:Text(request->folder)]];
    if (request->save) [panel setNameFieldStringValue:Text(request->suggestedName)];
    const bool agreed = [panel runModal] == NSFileHandlingPanelOKButton;
    const char* const path = agreed ? [[[panel URL] path] fileSystemRepresentation] : nullptr;
    // The window may have been closed meanwhile: then nobody waits for the answer.
    if (path && view->owner) (*chosen)(path);
}

- (void)showMessage {
    NSAlert* const alert = [[NSAlert alloc] init];
    [alert setMessageText:title];
    [alert setInformativeText:text];
    [alert runModal];
    [alert release];
}

@end

namespace norava::cocoa {

bool View::AskForFile(const FileDialogRequest& request, FileChosen chosen) {
    NoravaPanelRunner1* const runner = [[NoravaPanelRunner1 alloc] init];
    runner->view = [view retain];
    runner->request = new FileDialogRequest(request);
    runner->chosen = new FileChosen(std::move(chosen));
    [runner performSelector:@selector(askForFile) withObject:nil afterDelay:0.0];
    [runner release];  // the run loop holds it
    return true;
}

bool View::ShowMessage(const std::string& title, const std::string& text) {
    NoravaPanelRunner1* const runner = [[NoravaPanelRunner1 alloc] init];
    runner->title = [Text(title) retain];
    runner->text = [Text(text) retain];
    [runner performSelector:@selector(showMessage) withObject:nil afterDelay:0.0];
    [runner release];
    return true;
}

}  // namespace norava::cocoa
