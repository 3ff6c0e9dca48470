#include "gui/platform/cocoa_view.h"

#include <algorithm>
#include <cmath>

#ifdef __APPLE__
#include <ApplicationServices/ApplicationServices.h>
#endif

#include "gui/platform/native_scale.h"

namespace norava::cocoa {

namespace {

constexpr int kLargestSide = 32767;

int RoundDown(double value) {
    return static_cast<int>(std::floor(std::clamp(value, -1e6, 1e6)));
}

Modifiers ModifiersOf(NSEvent* event) {
    const NSUInteger flags = [event modifierFlags];
    // The command key stands where other systems have the control key.
    return {.control = (flags & (NSControlKeyMask | NSCommandKeyMask)) != 0,
            .shift = (flags & NSShiftKeyMask) != 0,
            .alt = (flags & NSAlternateKeyMask) != 0};
}

unsigned KeyOf(NSEvent* event) {
    NSString* const text = [event charactersIgnoringModifiers];
    NSString* const typed = [event characters];
    if ([text length] == 0) return 0;
    switch ([text characterAtIndex:0]) {
        case NSUpArrowFunctionKey:
            return kKeyUp;
        case NSDownArrowFunctionKey:
            return kKeyDown;
        case NSLeftArrowFunctionKey:
            return kKeyLeft;
        case NSRightArrowFunctionKey:
            return kKeyRight;
        case NSHomeFunctionKey:
            return kKeyHome;
        case NSEndFunctionKey:
            return kKeyEnd;
        case NSPageUpFunctionKey:
            return kKeyPageUp;
        case NSPageDownFunctionKey:
            return kKeyPageDown;
        case NSDeleteFunctionKey:
            return kKeyDelete;
        case 0x7F:
            return kKeyBackspace;  // the key that deletes backwards
        case 0x03:
            return kKeyEnter;  // on the keypad
        case 0x19:
            return kKeyTab;  // with shift
        default:
            break;
    }
    const bool withControl = ModifiersOf(event).control;
    NSString* const source = withControl || [typed length] == 0 ? text : typed;
    const unsigned first = [source characterAtIndex:0];
    constexpr unsigned kPrivateUse = 0xF700;  // function keys without a meaning here
    if (first >= kPrivateUse && first <= 0xF8FF) return 0;
    const bool isPair = first >= 0xD800 && first<0xDC00 && [source length]> 1;
    if (!isPair) return first;
    return 0x10000 + ((first - 0xD800) << 10) + ([source characterAtIndex:1] - 0xDC00);
}

}  // namespace

NSString* Text(const std::string& utf8) {
    NSString* const text = [NSString stringWithUTF8String:utf8.c_str()];
    return text ? text : @"?";
}

View::View(PlatformEvents& listener, NSView* parentView, CSize viewSize, int scaleFactor)
    : events(listener), parent(parentView), scale(scaleFactor), size(viewSize) {
    const NSRect frame = NSMakeRect(0, 0, size.cx, size.cy);
    view = [[NoravaPanelView1 alloc] initWithFrame:frame];
    view->owner = this;
    if (parent) {
        [parent addSubview:view];
    } else {
        const NSUInteger style =
            NSTitledWindowMask | NSClosableWindowMask | NSMiniaturizableWindowMask;
        window = [[NSWindow alloc] initWithContentRect:frame
                                             styleMask:style
                                               backing:NSBackingStoreBuffered
                                                 defer:NO];
        [window setReleasedWhenClosed:NO];
        [window setContentView:view];
        [window setDelegate:(id)view];
        [window setAcceptsMouseMovedEvents:YES];
        [window center];
        [window makeKeyAndOrderFront:nil];
        [window makeFirstResponder:view];
    }
    [view startTimer];
}

View::~View() {
    TrackMouse(false, false);
    if (keyboardWanted) WantKeyboard(false);
    view->owner = nullptr;
    [view stopTimer];
    [view removeFromSuperview];
    [view release];
    [window setDelegate:nil];
    [window close];
    [window release];
}

void View::Redraw(CRect part) {
    const CRect shown = part.GetIntersection(CRect({0, 0}, size));
    if (shown.IsEmpty()) return;
    // The system counts rows from the bottom.
    [view setNeedsDisplayInRect:NSMakeRect(shown.left, size.cy - shown.GetBottom(), shown.width,
                                           shown.height)];
}

void View::Resize(CSize newSize) {
    size = CSize(std::clamp(newSize.cx, 1, kLargestSide), std::clamp(newSize.cy, 1, kLargestSide));
    const NSSize extent = NSMakeSize(size.cx, size.cy);
    if (window) [window setContentSize:extent];
    [view setFrameSize:extent];
}

void View::SetTitle(const char* title) {
    [window setTitle:Text(title)];
}

// Cut off from the mouse the pointer stays where it is, and only movements come.
void View::TrackMouse(bool on, bool hidePointer) {
    const bool hide = on && hidePointer;
    if (hide == pointerHidden) return;
    pointerHidden = hide;
    movementLeftX = movementLeftY = 0.0;
#ifdef __APPLE__
    CGAssociateMouseAndMouseCursorPosition(!hide);
#endif
    hide ? [NSCursor hide] : [NSCursor unhide];
}

void View::WantKeyboard(bool on) {
    keyboardWanted = on;
    NSWindow* const host = [view window];
    if (!parent || !host) return;
    if (on)
        [host makeFirstResponder:view];
    else if ([host firstResponder] == view)
        [host makeFirstResponder:[view superview]];
}

// A host runs the loop by itself.
void View::RunEvents() {
    if (parent) return;
    NSAutoreleasePool* const pool = [[NSAutoreleasePool alloc] init];
    NSWindow* const own = [window retain];  // an event may delete the view
    while (NSEvent* event = [NSApp nextEventMatchingMask:NSAnyEventMask
                                               untilDate:[NSDate distantPast]
                                                  inMode:NSDefaultRunLoopMode
                                                 dequeue:YES]) {
        [NSApp sendEvent:event];
        if (![own isVisible]) break;
    }
    [own release];
    [pool release];
}

void View::WaitForEvents() {
    constexpr double kTickSeconds = 1.0 / 30.0;
    [NSApp nextEventMatchingMask:NSAnyEventMask
                       untilDate:[NSDate dateWithTimeIntervalSinceNow:kTickSeconds]
                          inMode:NSDefaultRunLoopMode
                         dequeue:NO];
}

void View::Paint(NSRect dirty) {
    const int left = RoundDown(dirty.origin.x);
    const int top = RoundDown(size.cy - dirty.origin.y - dirty.size.height);
    const int right = -RoundDown(-(dirty.origin.x + dirty.size.width));
    const int bottom = -RoundDown(-(size.cy - dirty.origin.y));
    events.Paint(*this, {left, top, right - left, bottom - top});
}

void View::ShowPixels(const uint32_t* words, CSize stored, CRect clip) {
    const auto width = static_cast<size_t>(clip.width);
    rows.resize(width * static_cast<size_t>(clip.height));
    // Rows from the top, and opaque: the alpha bytes mean nothing here.
    for (int y = 0; y < clip.height; ++y) {
        const uint32_t* const row =
            words +
            static_cast<size_t>(stored.cy - 1 - clip.top - y) * static_cast<size_t>(stored.cx) +
            static_cast<size_t>(clip.left);
        std::transform(row, row + width, rows.data() + static_cast<size_t>(y) * width,
                       [](uint32_t word) { return word | 0xFF000000u; });
    }
    auto* plane = reinterpret_cast<unsigned char*>(rows.data());
    NSBitmapImageRep* const picture =
        [[NSBitmapImageRep alloc] initWithBitmapDataPlanes:&plane
                                                pixelsWide:clip.width
                                                pixelsHigh:clip.height
                                             bitsPerSample:8
                                           samplesPerPixel:4
                                                  hasAlpha:YES
                                                  isPlanar:NO
                                            colorSpaceName:NSDeviceRGBColorSpace
                                               bytesPerRow:static_cast<NSInteger>(4 * width)
                                              bitsPerPixel:32];
    [[NSGraphicsContext currentContext] setImageInterpolation:NSImageInterpolationNone];
    const double pointsPerPixel = 1.0 / scale;
    [picture drawInRect:NSMakeRect(clip.left * pointsPerPixel,
                                   size.cy - clip.GetBottom() * pointsPerPixel,
                                   clip.width * pointsPerPixel, clip.height * pointsPerPixel)];
    [picture release];
}

CPoint View::PlaceOf(NSEvent* event) const {
    const NSPoint at = [view convertPoint:[event locationInWindow] fromView:nil];
    return {RoundDown(at.x), RoundDown(size.cy - at.y)};
}

void View::Press(NSEvent* event, int button) {
    if (!pointerHidden) mouse = PlaceOf(event);
    // The host may have taken the keyboard since the text field that wants it was opened.
    if (keyboardWanted && [[view window] firstResponder] != view)
        [[view window] makeFirstResponder:view];
    events.MousePressed(mouse, button, ModifiersOf(event), [event clickCount] % 2 == 0);
}

void View::Release(NSEvent* event, int button) {
    if (!pointerHidden) mouse = PlaceOf(event);
    events.MouseReleased(mouse, button, ModifiersOf(event));
}

void View::Move(NSEvent* event) {
    if (!pointerHidden) {
        mouse = PlaceOf(event);
        events.MouseMoved(mouse, ModifiersOf(event));
        return;
    }
    movementLeftX += [event deltaX];
    movementLeftY += [event deltaY];
    const int x = static_cast<int>(std::trunc(std::clamp(movementLeftX, -1e6, 1e6)));
    const int y = static_cast<int>(std::trunc(std::clamp(movementLeftY, -1e6, 1e6)));
    movementLeftX -= x;
    movementLeftY -= y;
    if (x != 0 || y != 0) events.MouseMovedBy(CSize(x, y), ModifiersOf(event));
}

void View::LeaveMouse(NSEvent* event) {
    // A drag goes on outside, and where it is comes with its movements.
    if ([NSEvent pressedMouseButtons] != 0) return;
    mouse = {-1, -1};
    events.MouseMoved(mouse, ModifiersOf(event));
}

void View::Wheel(NSEvent* event) {
    mouse = PlaceOf(event);
    // What the system calls to the left is positive.
    events.MouseWheel(mouse, static_cast<float>(-[event deltaX]),
                      static_cast<float>([event deltaY]), ModifiersOf(event));
}

bool View::Key(NSEvent* event, bool down) {
    const unsigned key = KeyOf(event);
    if (key == 0) return false;
    return down ? events.KeyPressed(key, ModifiersOf(event))
                : events.KeyReleased(key, ModifiersOf(event));
}

void View::LoseParent() {
    events.ViewLost();
}

}  // namespace norava::cocoa

namespace norava {

std::unique_ptr<PlatformView> OpenNativeView(PlatformEvents& events, void* parent, CSize size,
                                             int scale) {
    if (!parent) [NSApplication sharedApplication];
    return std::make_unique<cocoa::View>(events, static_cast<NSView*>(parent), size, scale);
}

int GetNativeScale() {
    constexpr double kUsualDensity = 96.0;
    NSScreen* const screen = [NSScreen mainScreen];
    if (!screen) return 1;
    const double factor = [screen backingScaleFactor];
    const double rows = [screen frame].size.height * factor;
    return ChooseScale(factor * kUsualDensity, static_cast<int>(std::clamp(rows, 0.0, 1e6)));
}

}  // namespace norava
