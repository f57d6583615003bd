"""The drawn ribbon: pressed with the mouse it does what the console host does, and it follows Office's theme."""
import collections
import os
import re
import subprocess
import time
import unittest

from support import (BIN, ExcelDocument, HostTest, PowerPointDocument, ScreenTest, pdf_attachment_names, pdf_info,
                     pdf_is_pdfa, pdf_outline_titles, pdf_text, pixel_rows, png_image, reg, screen_pixels, wait_until,
                     windows_path, wine)
from test_icons import icon_groups, read_icon
from test_outlook import BUTTONS, OutlookTest

LIGHT, DARK_GRAY, BLACK, WHITE, SYSTEM = 0, 3, 4, 5, 6
# Number of the light icon of each control that has a picture.
ICONS = {"BUTTON_ID_CREATE": 110, "BUTTON_ID_CREATE_AND_SHARE": 111, "Menu_ID_Open": 112, "Menu_ID_Create": 110,
         "Button_ID_OpenFromMail": 113, "Button_ID_OpenFromFolder": 114, "Button_ID_CreateByMail": 115,
         "Button_ID_CreateByFolder": 116, "Button_ID_CreateMergeByFolder": 117, "Button_ID_CreatePortfolioByMail": 118}


def set_theme(number):
    reg("add", r"HKCU\Software\Microsoft\Office\16.0\Common", "/v", "UI Theme", "/t", "REG_DWORD", "/d", str(number),
        "/f")


def picture_areas(out):
    """From the output of --places, where the controls' pictures are: id to (left, top, width, height) on the screen."""
    lines = [line.split("\t") for line in out.splitlines() if line.startswith("place\t")]
    return {line[1]: tuple(map(int, line[4].split())) for line in lines if len(line) > 4}


def marks(area):
    """How many pixels of the area of the screen differ from its upper left one."""
    pixels = [pixel for row in screen_pixels(area) for pixel in row]
    return sum(pixel != pixels[0] for pixel in pixels)


def icon(control, size, dark):
    number = ICONS[control] + (100 if dark else 0)
    return next(picture for picture in read_icon(dict(icon_groups())[number]) if picture.size == size)


def shows(control, area, dark):
    """Whether the area of the screen shows exactly that control's icon, on whatever plain colour is behind it."""
    pixels = screen_pixels(area)
    behind = pixels[0][0]
    picture = icon(control, area[2], dark)
    for row, colours, alphas in zip(pixels, picture.colours, picture.alpha):
        for pixel, colour, alpha in zip(row, colours, alphas):
            expected = [(c * alpha + b * (255 - alpha)) / 255 for c, b in zip(colour, behind)]
            if max(abs(p - e) for p, e in zip(pixel, expected)) > 3:
                return False
    return True


# --- What a press does ------------------------------------------------------------------------------------------------

class PressedInDocuments(ScreenTest, HostTest):
    """A host's stand-in without a window, and then in one, with the same actions."""

    def facts(self):
        """What the actions left in files; the document's own file stays."""
        left = {}
        for name in self.files():
            path = os.path.join(self.folder, name)
            if path == self.document:
                continue
            if name.endswith(".pdf"):
                info = pdf_info(path)
                left[name] = (pdf_text(path), pdf_outline_titles(path), pdf_is_pdfa(path),
                              [info.get(key) for key in ("Pages", "Title", "Author")])
            else:
                # What differs from start to start: the size of a PDF, which holds its time, a window and a thread.
                with open(path, encoding="utf-8") as file:
                    left[name] = re.sub(r"[0-9]+ bytes|(owner|thread)=[0-9]+", "", file.read())
            os.remove(path)
        return left

    def both(self, *actions):
        """Does the actions both ways; gives the output and what is in the files that they left."""
        console = self.host(*actions), self.facts()
        window = self.host("--window", *actions), self.facts()
        self.assertEqual(console, window)
        return window

    def check_create_pdf(self):
        out, left = self.both("--click", "BUTTON_ID_CREATE")
        self.assertIn("clicked: Create PDF\n", out)
        self.assertEqual(sorted(left), ["companion.log", "report.pdf"])
        self.assertIn(f'"{windows_path(self.pdf)}" ]\n', left["companion.log"])

    def check_create_and_send(self):
        _, left = self.both("--click", "BUTTON_ID_CREATE_AND_SHARE")
        self.assertEqual(sorted(left), ["companion.log", "mail.log", "report.pdf"])
        self.assertEqual(left["mail.log"].count("\n"), 2)

    def check_boxes(self, *boxes):
        """Gives every box its other state."""
        ticked = {"PDFA"} & set(boxes)
        actions = [word for box in boxes
                   for word in ("--tick" if box in ticked else "--untick", f"CheckBox_ID_{box}")]
        out, left = self.both(*actions, "--ribbon", "--click", "BUTTON_ID_CREATE")
        self.assertEqual(out.count(" [x]  CheckBox"), len(ticked))
        self.assertEqual(out.count(" [ ]  CheckBox"), len(boxes) - len(ticked))
        self.assertEqual(list(left), ["report.pdf"])  # the companion was not started
        _, titles, is_pdfa, (_, title, author) = left["report.pdf"]
        self.assertEqual((is_pdfa, title or "", author or ""), (bool(ticked), "", ""))
        if "CreateBookmarks" in boxes:
            self.assertEqual(titles, [])


class PressedInWord(PressedInDocuments):
    def test_CreatePdfDoesTheSameAsWithoutAWindow(self):
        self.check_create_pdf()

    def test_CreateAndSendDoesTheSameAsWithoutAWindow(self):
        self.check_create_and_send()

    def test_CheckBoxesDoTheSameAsWithoutAWindow(self):
        self.check_boxes("OpenAfterExport", "PDFA", "CreateBookmarks", "IncludeDocProps")

    def test_BoxThatIsPressedTwiceIsAsItWas(self):
        out = self.host("--window", "--tick", "CheckBox_ID_PDFA", "--untick", "CheckBox_ID_PDFA", "--ribbon")
        self.assertIn('"Supports PDF/A standards" [ ]', out)

    def test_CancelledDialogLeavesEverythingAsItWas(self):
        before = self.files()
        self.host("--window", "--cancel", "--click", "BUTTON_ID_CREATE")
        self.assertEqual(self.files(), before)

    def test_ButtonThatIsNotThereIsSaidInOneLine(self):
        code, _, errors = wine(BIN / "office-standin.exe", "--window", "--document", windows_path(self.document),
                               "--click", "Button_ID_OpenFromMail")
        self.assertEqual((code, errors), (1, "office-standin.exe: the ribbon has no button Button_ID_OpenFromMail"))

    def test_ActionsOfTheWindowNeedOne(self):
        for action in (("--hover", "BUTTON_ID_CREATE"), ("--open", "Menu_ID_Open"), ("--picture", "x.png"),
                       ("--message", "x.png"), ("--texts",), ("--places",), ("--stay",)):
            code, _, errors = wine(BIN / "office-standin.exe", *action)
            self.assertEqual((code, errors), (2, f"office-standin.exe: {action[0]} needs --window"))

    def test_ThemeIsANumber(self):
        code, _, errors = wine(BIN / "office-standin.exe", "--theme", "black")
        self.assertEqual((code, errors), (2, "office-standin.exe: a theme is a number, not black"))


class PressedInExcel(ExcelDocument, PressedInDocuments):
    def test_CreatePdfDoesTheSameAsWithoutAWindow(self):
        self.check_create_pdf()

    def test_CreateAndSendDoesTheSameAsWithoutAWindow(self):
        self.check_create_and_send()

    def test_CheckBoxesDoTheSameAsWithoutAWindow(self):
        self.check_boxes("OpenAfterExport", "IncludeDocProps")


class PressedInPowerPoint(PowerPointDocument, PressedInDocuments):
    def test_CreatePdfDoesTheSameAsWithoutAWindow(self):
        self.check_create_pdf()

    def test_CreateAndSendDoesTheSameAsWithoutAWindow(self):
        self.check_create_and_send()

    def test_CheckBoxesDoTheSameAsWithoutAWindow(self):
        self.check_boxes("OpenAfterExport", "PDFA", "IncludeDocProps")


class PressedInOutlook(ScreenTest, OutlookTest):
    def written_files(self):
        """Every file in the working folder: its path to what is attached to it, and its pages."""
        found = {}
        for folder, _, names in os.walk(self.written):
            for name in names:
                path = os.path.join(folder, name)
                facts = (pdf_text(path), sorted(pdf_attachment_names(path))) if name.endswith(".pdf") else None
                found[os.path.relpath(path, self.written)] = facts
        return found

    def both(self, count, *buttons, select):
        """Clicks without a window and in one; the companion starts `count` times each time. Gives the files that were
        written, which are the same."""
        left = []
        for window in (False, True):
            out = self.click(*buttons, select=select, window=window)
            left.append((out, self.starts(count), self.written_files()))
            self.remove_written()
            os.remove(self.companion_log)
        self.assertEqual(*left)
        return left[0][2]

    def test_EveryButtonDoesTheSameAsWithoutAWindow(self):
        self.prepare(*self.sample_paths(1, 2, 4, 9))
        files = self.both(7, *BUTTONS, select=(1, 3))
        self.assertIn(os.path.join("Create", "Portfolio.pdf"), files)
        self.assertGreater(len(files[os.path.join("Create", "Portfolio.pdf")][1]), 2)

    def test_SelectionIsWhatIsSelectedInTheList(self):
        self.prepare(*self.sample_paths(1, 3, 14, 23))
        self.click("Button_ID_CreateByMail", select=(2, 4), window=True)
        ((first, second),) = self.starts(1)
        self.assertTrue(first.endswith("\\Main span with picture.pdf"), first)
        self.assertTrue(second.endswith("\\Thank you, all of you!.pdf"), second)

    def test_PictureIsOfTheLastMessage(self):
        self.prepare(*self.sample_paths(9))
        path = os.path.join(self.folder, "message.png")
        out = self.click("Button_ID_CreateByMail", window=True, message=path)
        self.assertEqual(out.count("\nmessage: "), 2)
        with open(path, "rb") as file:
            picture = png_image(file.read()).convert("RGB")
        # As wide as its text at least, which is dark on a light ground beside an orange sign.
        self.assertGreater(picture.width, 300)
        self.assertGreater(picture.height, 100)
        hues = collections.Counter("orange" if red > 200 and 80 < green < 200 and blue < 80 else
                                   "dark" if red < 80 else "light" if blue > 200 else "other"
                                   for row in pixel_rows(picture) for red, green, blue in row)
        self.assertGreater(hues["light"], picture.width * picture.height / 2)
        self.assertGreater(hues["dark"], 500)
        self.assertGreater(hues["orange"], 100)

    def test_PictureOfAMessageThatDidNotComeIsRefused(self):
        self.prepare(*self.sample_paths(1))
        code, _, errors = wine(BIN / "office-standin.exe", "--window", "--outlook", windows_path(self.prepared),
                               "--message", windows_path(os.path.join(self.folder, "message.png")))
        self.assertEqual((code, errors), (1, "office-standin.exe: no message was shown"))


# --- What is seen -----------------------------------------------------------------------------------------------------

class Seen(ScreenTest):
    """A window that stays on the screen, over an add-in that is asked again when the theme changes."""

    def show(self, *actions):
        """Opens the window; gives the areas of the pictures once they are there. The screen is empty before."""
        set_theme(LIGHT)
        arguments = [BIN / "office-standin.exe", "--window", *self.shown(), *actions, "--places"]
        code, out, errors = wine(*arguments)
        self.assertEqual((code, errors), (0, ""), out)
        self.places = picture_areas(out)
        areas = {control: area for control, area in self.places.items() if control in ICONS}
        self.window = self.start(*arguments, "--stay",
                                 environment={"ZAVO_COMPANION_LOG": windows_path(self.companion_log)})
        self.assert_shown(areas, dark=False, seconds=10)
        return areas

    def assert_shown(self, areas, dark, seconds):
        deadline = time.monotonic() + seconds
        for control, area in areas.items():
            while not shows(control, area, dark):
                self.assertLess(time.monotonic(), deadline, f"{control} is not as it should be")
                time.sleep(0.02)

    def check_themes(self, *actions):
        areas = self.show(*actions)
        self.assertTrue(areas)
        for theme in (BLACK, LIGHT, BLACK, WHITE, DARK_GRAY):
            set_theme(theme)
            self.assert_shown(areas, dark=theme == BLACK, seconds=1)
        return areas


class SeenInDocument(Seen, HostTest):
    def shown(self):
        return "--document", windows_path(self.document)


class SeenInWord(SeenInDocument):
    def test_PicturesFollowTheThemeWithinASecond(self):
        self.assertEqual(sorted(self.check_themes()), ["BUTTON_ID_CREATE", "BUTTON_ID_CREATE_AND_SHARE"])

    def test_LabelsStandBesideTheirPictures(self):
        self.show()
        for control, (left, top, _, height) in self.places.items():
            if control.startswith("BUTTON"):  # two lines below the picture
                lines = [(left, top + height + 2, 32, 14), (left, top + height + 17, 32, 14)]
            elif control.startswith("CheckBox"):
                lines = [(left + 16, top, 80, height)]
            else:
                continue
            for line in lines:
                self.assertTrue(wait_until(lambda area=line: marks(area) > 50), control)

    def test_FirstPageStandsBelowTheRibbon(self):
        self.show()
        page = (120, 180, 740, 440)
        self.assertTrue(wait_until(lambda: 10000 < marks(page) < 100000), marks(page))
        self.assertEqual(screen_pixels(page)[0][0], (255, 255, 255))

    def test_ThemeOfWindowsCountsWhereOfficeLeavesItToThat(self):
        windows = (r"HKCU\Software\Microsoft\Windows\CurrentVersion\Themes\Personalize", "/v", "AppsUseLightTheme")
        reg("add", *windows, "/t", "REG_DWORD", "/d", "1", "/f")
        self.addCleanup(reg, "delete", *windows, "/f")
        areas = self.show()
        set_theme(SYSTEM)
        for light in (0, 1):
            reg("add", *windows, "/t", "REG_DWORD", "/d", str(light), "/f")
            self.assert_shown(areas, dark=not light, seconds=1)

    def test_TipShowsWhileTheMouseRestsOnAControl(self):
        area = (10, 161, 150, 40)
        self.show()
        without = screen_pixels(area)
        self.window.terminate()
        self.start(BIN / "office-standin.exe", "--window", *self.shown(), "--hover", "BUTTON_ID_CREATE", "--stay")
        self.assertTrue(wait_until(lambda: screen_pixels(area)[0][0] == (255, 255, 255)))
        self.assertNotEqual(screen_pixels(area), without)

    def test_WindowEndsWhenItIsClosed(self):
        self.show()
        self.assertEqual(wine("taskkill.exe", "/im", "office-standin.exe")[0], 0)
        self.assertEqual(self.window.wait(10), 0)


class SeenInExcel(ExcelDocument, SeenInDocument):
    def test_PicturesFollowTheThemeWithinASecond(self):
        self.assertEqual(len(self.check_themes()), 2)


class SeenInPowerPoint(PowerPointDocument, SeenInDocument):
    def test_PicturesFollowTheThemeWithinASecond(self):
        self.assertEqual(len(self.check_themes()), 2)


class SeenMails(Seen, OutlookTest):
    def setUp(self):
        super().setUp()
        self.prepare(*self.sample_paths(1, 2, 4, 9))

    def shown(self):
        return "--outlook", windows_path(self.prepared), "--select", "2"

    def selected(self):
        """The places of the marked mails, from 0."""
        stripes = [screen_pixels((1, 157 + 46 * row + 20, 1, 1))[0][0] for row in range(4)]
        return [row for row, colour in enumerate(stripes) if colour == (0x0F, 0x6C, 0xBD)]


class SeenInOutlook(SeenMails):
    def test_PicturesFollowTheThemeWithinASecond(self):
        self.assertEqual(len(self.check_themes()), 3)

    def test_PicturesOfAnOpenMenuFollowTheThemeWithinASecond(self):
        self.assertEqual(len(self.check_themes("--open", "Menu_ID_Create")), 6)

    def test_MailHasSenderSubjectTimeAndAMarkForAttachments(self):
        self.show()
        for row, has_attachment in enumerate((False, True, True, False)):
            top = 157 + 46 * row
            for left, line, width in ((14, 5, 60), (14, 25, 60), (230, 25, 80)):
                self.assertTrue(wait_until(lambda area=(left, top + line, width, 18): marks(area) > 50), row)
            self.assertEqual(marks((300, top + 6, 22, 18)) > 10, has_attachment, row)

    def test_MailThatIsLookedAtStandsBesideTheList(self):
        self.show()
        page = (380, 190, 580, 440)
        self.assertTrue(wait_until(lambda: 2000 < marks(page) < 100000), marks(page))
        self.assertEqual(screen_pixels(page)[0][0], (255, 255, 255))

    def test_SelectedMailsAreMarkedInTheList(self):
        self.show()
        self.assertTrue(wait_until(lambda: self.selected() == [1]), self.selected())


# --- What a hand at the mouse does ------------------------------------------------------------------------------------

def hand(*actions):
    """Has the X server take that for a user's doing, as xdotool names it."""
    subprocess.run(["xdotool", *map(str, actions)], check=True, timeout=30)
    time.sleep(0.2)  # a user is no faster


def middle_of(area):
    left, top, width, height = area
    return left + width // 2, top + height // 2


class Handled:
    """A window that is used through the screen alone; stands before the class that shows it."""

    TITLE, CLOSE, PAGE = (300, 16), (977, 16), (600, 500)
    ITEM = 26  # the height of a menu's items

    def setUp(self):
        super().setUp()
        hand("mousemove", *self.PAGE)
        self.areas = self.show()

    def click_at(self, at, *keys):
        hand("mousemove", *at, *(word for key in keys for word in ("keydown", key)))
        hand("click", 1, *(word for key in keys for word in ("keyup", key)))

    def drag(self, start, end):
        """Presses at one place and releases at another one."""
        hand("mousemove", *start)
        hand("mousedown", 1)
        hand("mousemove", *end)
        hand("mouseup", 1)


class HandledInWord(Handled, SeenInDocument):
    def box(self):
        """What the inside of a check box shows."""
        left, top, width, height = self.places["CheckBox_ID_PDFA"]
        return screen_pixels((left + 1, top + 1, width - 2, height - 2))

    def test_ControlIsUsedOnlyWhenItIsPressedAndReleased(self):
        at, before = middle_of(self.places["CheckBox_ID_PDFA"]), self.box()
        self.drag(at, self.PAGE)
        self.drag(self.PAGE, at)
        self.assertEqual(self.box(), before)
        self.click_at(at)
        self.assertTrue(wait_until(lambda: self.box() != before))

    def test_CrossClosesTheWindowOnlyWhenItIsPressedAndReleased(self):
        self.drag(self.PAGE, self.CLOSE)
        self.drag(self.CLOSE, self.PAGE)
        time.sleep(0.5)
        self.assertIsNone(self.window.poll())
        self.click_at(self.CLOSE)
        self.assertEqual(self.window.wait(10), 0)

    def test_HalfFilledCircleChangesTheTheme(self):
        circle = middle_of(self.places["OfficeThemes"])
        self.click_at(circle)
        self.click_at((circle[0], 62 + 2 * self.ITEM + self.ITEM // 2))
        self.assert_shown(self.areas, dark=True, seconds=1)


class HandledInOutlook(Handled, SeenMails):
    def test_KeysAddMailsToTheSelection(self):
        for row, keys, selected in ((2, (), [2]), (0, ("ctrl",), [0, 2]), (2, ("ctrl",), [0]), (3, (), [3]),
                                    (1, ("shift",), [1, 2, 3])):
            self.click_at((100, 157 + 46 * row + 20), *keys)
            self.assertTrue(wait_until(lambda: self.selected() == selected), (row, keys, self.selected()))

    def test_ClickBesideAnOpenMenuClosesIt(self):
        menu = middle_of(self.places["Menu_ID_Create"])
        area = (menu[0], 140, 100, 80)  # below the menu's button
        for beside in (self.TITLE, (600, 100), (150, 500), self.PAGE, menu):
            hand("mousemove", *self.PAGE)
            closed = screen_pixels(area)
            self.click_at(menu)
            self.assertTrue(wait_until(lambda: screen_pixels(area) != closed), beside)
            self.click_at(beside)
            self.assertTrue(wait_until(lambda: screen_pixels(area) == closed), beside)

    def test_ItemIsMarkedAsLongAsTheMouseIsOnIt(self):
        menu = middle_of(self.places["Menu_ID_Create"])
        self.click_at(menu)
        area = (menu[0], 140, 100, 2 * self.ITEM)
        unmarked = screen_pixels(area)
        hand("mousemove", menu[0] + 20, 150)
        self.assertTrue(wait_until(lambda: screen_pixels(area) != unmarked))
        hand("mousemove", *self.PAGE)
        self.assertTrue(wait_until(lambda: screen_pixels(area) == unmarked))

    def test_ChosenItemIsUsed(self):
        menu = middle_of(self.places["Menu_ID_Create"])
        self.click_at(menu)
        self.click_at((menu[0] + 20, 150))
        self.assertTrue(wait_until(self.companion_report))
        ((path,),) = self.starts(1)
        self.assertTrue(path.endswith("\\Piers 1 to 4.pdf"), path)


if __name__ == "__main__":
    unittest.main()
