#include "gui/platform/cocoa_view.h"

#ifndef __APPLE__
// What other builds of AppKit lack, declared so that the rest can be compiled with them.
@interface NSView (TrackingAreas)
- (void)updateTrackingAreas;
- (NSArray*)trackingAreas;
- (void)addTrackingArea:(NSTrackingArea*)area;
- (void)removeTrackingArea:(NSTrackingArea*)area;
@end
#endif

namespace {

// The first of the dragged files, as the window gets it.
std::string DraggedFile(id<NSDraggingInfo> drag) {
    NSArray* const names = [[drag draggingPasteboard] propertyListForType:NSFilenamesPboardType];
    if (![names isKindOfClass:[NSArray class]] || [names count] == 0) return {};
    const char* const path = [[names objectAtIndex:0] fileSystemRepresentation];
    return path ? path : "";
}

}  // namespace

@implementation NoravaPanelView1

- (id)initWithFrame:(NSRect)frame {
    self = [super initWithFrame:frame];
    if (!self) return nil;
    [self registerForDraggedTypes:[NSArray arrayWithObject:NSFilenamesPboardType]];
    return self;
}

// The timer holds its target, so it has to be stopped for the view to go.
- (void)startTimer {
    timer = [NSTimer timerWithTimeInterval:1.0 / 30.0
                                    target:self
                                  selector:@selector(tick:)
                                  userInfo:nil
                                   repeats:YES];
    NSRunLoop* const loop = [NSRunLoop currentRunLoop];
    [loop addTimer:timer forMode:NSDefaultRunLoopMode];
    // Hosts' menus and drags run the loop in this mode.
    [loop addTimer:timer forMode:NSEventTrackingRunLoopMode];
}

- (void)stopTimer {
    [timer invalidate];
    timer = nil;
}

- (void)tick:(NSTimer*)sender {
    if (owner) owner->events.Tick();
}

- (void)dealloc {
    [self stopTimer];
    [super dealloc];
}

- (BOOL)isOpaque {
    return YES;
}

- (BOOL)acceptsFirstMouse:(NSEvent*)event {
    return YES;
}

- (BOOL)acceptsFirstResponder {
    return owner && owner->IsKeyboardWanted();
}

- (BOOL)becomeFirstResponder {
    if (owner) owner->events.FocusChanged(true);
    return YES;
}

- (BOOL)resignFirstResponder {
    if (owner) owner->events.FocusChanged(false);
    return YES;
}

- (void)drawRect:(NSRect)dirty {
    if (owner) owner->Paint(dirty);
}

// A host that throws its window away takes this view out of it.
- (void)viewDidMoveToSuperview {
    if (owner && ![self superview]) owner->LoseParent();
}

- (void)updateTrackingAreas {
    [super updateTrackingAreas];
    while ([[self trackingAreas] count] > 0)
        [self removeTrackingArea:[[self trackingAreas] objectAtIndex:0]];
    const NSTrackingAreaOptions options = NSTrackingMouseEnteredAndExited | NSTrackingMouseMoved |
                                          NSTrackingActiveInActiveApp | NSTrackingInVisibleRect;
    NSTrackingArea* const area = [[NSTrackingArea alloc] initWithRect:[self bounds]
                                                              options:options
                                                                owner:self
                                                             userInfo:nil];
    [self addTrackingArea:area];
    [area release];
}

- (void)mouseDown:(NSEvent*)event {
    if (owner) owner->Press(event, norava::kMouseLeft);
}

- (void)mouseUp:(NSEvent*)event {
    if (owner) owner->Release(event, norava::kMouseLeft);
}

- (void)rightMouseDown:(NSEvent*)event {
    if (owner) owner->Press(event, norava::kMouseRight);
}

- (void)rightMouseUp:(NSEvent*)event {
    if (owner) owner->Release(event, norava::kMouseRight);
}

- (void)otherMouseDown:(NSEvent*)event {
    if (owner && [event buttonNumber] == 2) owner->Press(event, norava::kMouseMiddle);
}

- (void)otherMouseUp:(NSEvent*)event {
    if (owner && [event buttonNumber] == 2) owner->Release(event, norava::kMouseMiddle);
}

- (void)mouseMoved:(NSEvent*)event {
    if (owner) owner->Move(event);
}

- (void)mouseDragged:(NSEvent*)event {
    [self mouseMoved:event];
}

- (void)rightMouseDragged:(NSEvent*)event {
    [self mouseMoved:event];
}

- (void)otherMouseDragged:(NSEvent*)event {
    [self mouseMoved:event];
}

- (void)mouseEntered:(NSEvent*)event {
    [self mouseMoved:event];
}

- (void)mouseExited:(NSEvent*)event {
    if (owner) owner->LeaveMouse(event);
}

- (void)scrollWheel:(NSEvent*)event {
    if (owner) owner->Wheel(event);
}

- (void)keyDown:(NSEvent*)event {
    if (!owner || !owner->Key(event, true)) [super keyDown:event];
}

- (void)keyUp:(NSEvent*)event {
    if (!owner || !owner->Key(event, false)) [super keyUp:event];
}

- (NSDragOperation)draggingEntered:(id<NSDraggingInfo>)drag {
    const std::string path = DraggedFile(drag);
    const bool wanted = owner && !path.empty() && owner->events.FileEntered(path.c_str());
    return wanted ? NSDragOperationCopy : NSDragOperationNone;
}

- (void)draggingExited:(id<NSDraggingInfo>)drag {
    const std::string path = DraggedFile(drag);
    if (owner && !path.empty()) owner->events.FileLeft(path.c_str());
}

- (BOOL)performDragOperation:(id<NSDraggingInfo>)drag {
    const std::string path = DraggedFile(drag);
    return owner && !path.empty() && owner->events.FileDropped(path.c_str());
}

// The delegate of a window of its own.
- (BOOL)windowShouldClose:(id)sender {
    if (owner) owner->events.CloseRequested();
    return NO;
}

@end
