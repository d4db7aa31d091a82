"""The alarm list, its acknowledgement and the icons of hashes, step by step."""

import unittest

from service_harness import ServiceTest, SignalRecorder, wait_for

STATES = ["AlarmInAlarmlist", "ActiveAlarmInAlarmlist", "FaultInAlarmlist",
          "ActiveFaultInAlarmlist", "CentralDetector"]
ALARM, FAULT = 0, 2
ON, OFF = 1, 2


class AlarmTest(ServiceTest):
    def alarm(self, id_, state, type_=ALARM, description="{}", **changes):
        self.client.log_event(type_=type_, state=state, alarm_id=id_, description=description,
                              event_id="pump/Hot", icon="EventlistAlarmOn" if state == ON
                              else "EventlistAlarmOff", **changes)

    def listed(self):
        return {row["AlarmID"]: (row["AlarmActive"], row["AlarmAcknowledgment"])
                for row in self.client.alarms().rows}

    def states(self):
        state = self.client.alarm_state()
        return [state[name] for name in STATES]


class Living(AlarmTest):
    def test_an_alarm_lives_until_it_is_gone_and_acknowledged(self):
        self.assertEqual(self.states(), [0, 0, 0, 0, 0])
        self.alarm("a", ON)
        self.assertEqual(self.listed(), {"a": ("1", "0")})
        self.assertEqual(self.states(), [1, 1, 0, 0, 1])
        self.alarm("a", OFF)
        self.assertEqual(self.listed(), {"a": ("0", "0")})
        self.assertEqual(self.states(), [1, 0, 0, 0, 1])
        self.client.acknowledge(["a"], "meier")
        self.assertEqual(self.listed(), {})
        self.assertEqual(self.states(), [0, 0, 0, 0, 1])

    def test_an_acknowledged_alarm_stays_while_it_is_active_and_knows_who_and_when(self):
        self.alarm("a", ON)
        self.client.acknowledge(["a"], "meier")
        self.client.acknowledge(["a"], "schmidt")
        row = self.client.alarms().rows[0]
        self.assertEqual((row["AlarmActive"], row["AlarmAcknowledgment"], row["AcknowledgedBy"]),
                         ("1", "1", "meier"))
        self.assertRegex(row["AcknowledgedAt"], r"^20\d\d-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{3}[+-]")
        self.alarm("a", OFF)
        self.assertEqual(self.listed(), {})

    def test_an_alarm_that_comes_again_is_one_row_and_needs_a_new_acknowledgement(self):
        self.alarm("a", ON)
        self.alarm("a", OFF)
        self.alarm("a", ON)
        self.assertEqual(self.listed(), {"a": ("1", "0")})
        self.client.acknowledge(["a"])
        self.assertEqual(self.listed(), {"a": ("1", "1")})
        # Told again while it is on, as a module does that was started again: the same occurrence.
        self.alarm("a", ON, description='{"lang_en":"now hotter"}')
        self.assertEqual(self.listed(), {"a": ("1", "1")})
        self.assertEqual(self.client.alarms("lang_en").rows[0]["Description"], "now hotter")

    def test_acknowledging_one_touches_no_other(self):
        for id_ in ["a", "ab", "b", "A", ""]:
            self.alarm(id_, ON)
        self.client.acknowledge(["a"])
        acknowledged = [id_ for id_, (_, is_acknowledged) in self.listed().items()
                        if is_acknowledged == "1"]
        self.assertEqual(acknowledged, ["a"])
        self.client.acknowledge(["%", "*", "a' OR '1'='1"])
        acknowledged = [id_ for id_, (_, is_acknowledged) in self.listed().items()
                        if is_acknowledged == "1"]
        self.assertEqual(acknowledged, ["a"])

    def test_an_alarm_without_an_id_can_be_acknowledged_by_the_name_it_gets(self):
        self.alarm("", ON)
        self.assertEqual(self.listed(), {"-pump/pump/Hot": ("1", "0")})
        self.client.acknowledge(["-pump/pump/Hot"])
        self.assertEqual(self.listed(), {"-pump/pump/Hot": ("1", "1")})

    def test_an_unknown_id_is_refused_logged_and_counted(self):
        self.alarm("a", ON)
        self.client.acknowledge(["nobody", "a"], "meier")
        self.assertEqual(self.listed(), {"a": ("1", "1")})
        self.assertEqual(self.client.alarm_state()["RefusedAcknowledgements"], 1)
        self.assertTrue(any("nobody" in line and "meier" in line for line in self.service.lines))
        self.service.kill()
        self.service.start()
        self.assertEqual(self.client.alarm_state()["RefusedAcknowledgements"], 1)

    def test_faults_and_alarms_are_told_apart(self):
        self.alarm("f", ON, type_=FAULT)
        self.assertEqual(self.states(), [0, 0, 1, 1, 1])
        self.alarm("a", ON)
        self.assertEqual(self.states(), [1, 1, 1, 1, 1])
        self.alarm("f", OFF, type_=FAULT)
        self.assertEqual(self.states(), [1, 1, 1, 0, 1])

    def test_other_events_and_neutral_ones_are_no_alarms(self):
        self.alarm("n", 0)
        self.client.log_event(type_=1, state=ON, alarm_id="x")
        self.client.log_event(type_=3, state=ON, alarm_id="y")
        self.alarm("never-came", OFF)
        self.assertEqual(self.listed(), {})
        self.assertEqual(self.states(), [0, 0, 0, 0, 0])

    def test_the_central_detector_is_silenced_until_the_next_new_alarm(self):
        self.alarm("a", ON)
        self.client.acknowledge_central("meier")
        self.assertEqual(self.states(), [1, 1, 0, 0, 0])
        self.alarm("a", ON)
        self.alarm("a", OFF)
        self.assertEqual(self.states()[4], 0)
        self.alarm("a", ON)
        self.assertEqual(self.states()[4], 1)
        self.assertEqual(self.listed(), {"a": ("1", "0")})

    def test_what_operators_do_stands_in_the_event_list(self):
        self.alarm("a", ON)
        self.client.acknowledge(["a"], "meier")
        self.client.acknowledge(["a"], "meier")
        self.client.acknowledge_central("schmidt")
        self.client.acknowledge_central("schmidt")
        rows = self.client.part("lang_en", modules=["EventlistHandler"], number=3).rows
        self.assertEqual([(row["EventId"], row["User"], row["AlarmID"]) for row in rows], [
            ("EventlistHandler/CentralDetectorInactive", "schmidt", ""),
            ("EventlistHandler/AlarmAcknowledged", "meier", "a"),
            ("EventlistHandler/CentralDetectorActive", "", "")])
        self.assertEqual(rows[1]["IconType"], "EventlistAcknowledgeAlarm")
        self.assertEqual(rows[1]["KeywordName"], "AlarmAck;Firmware")

    def test_the_list_shows_the_columns_of_the_event_and_of_the_alarm(self):
        self.alarm("a", ON, description='{"lang_de":"heiß","lang_en":"hot"}', keywords=["x", "y"])
        answer = self.client.alarms("lang_de")
        self.assertEqual(answer.header[-4:], ["AlarmActive", "AlarmAcknowledgment",
                                              "AcknowledgedBy", "AcknowledgedAt"])
        row = answer.rows[0]
        self.assertEqual((row["Description"], row["KeywordName"], row["ModuleName"],
                          row["EventId"], row["EventType"]), ("heiß", "x;y", "pump", "pump/Hot", "0"))
        event = self.client.part(modules=["pump"]).rows[0]
        self.assertEqual(row["EventlistId"], event["EventlistId"])

    def test_the_alarm_list_survives_the_deletion_of_the_event_list(self):
        self.alarm("a", ON)
        self.client.delete_eventlist()
        self.assertEqual(self.listed(), {"a": ("1", "0")})


class Overflow(AlarmTest):
    arguments = ("--max-alarms", "3")

    def test_a_full_list_gives_up_what_is_gone_and_never_what_is_active(self):
        for id_ in ["a", "b", "c"]:
            self.alarm(id_, ON)
        self.alarm("b", OFF)
        self.alarm("d", ON)
        self.assertEqual(sorted(self.listed()), ["a", "c", "d"])
        self.alarm("e", ON)
        self.alarm("f", ON)
        self.assertEqual(sorted(self.listed()), ["a", "c", "d"])
        overflows = self.client.part(second=["EventlistHandler/AlarmlistOverflow"]).rows
        self.assertEqual(len(overflows), 1)
        # Each alarm stands in the event list all the same.
        self.assertEqual(len([row for row in self.client.part(modules=["pump"]).rows
                              if row["AlarmID"] in "ef"]), 2)


    def overflows(self):
        return len(self.client.part(second=["EventlistHandler/AlarmlistOverflow"]).rows)

    def test_an_alarm_without_room_sets_the_central_detector(self):
        for id_ in ["a", "b", "c"]:
            self.alarm(id_, ON)
        self.client.acknowledge_central()
        for id_ in ["d", "e"]:
            self.assertEqual(self.states()[4], 0)
            recorder = SignalRecorder(self.bus)
            self.alarm(id_, ON)
            self.assertEqual(self.states()[4], 1)
            recorder.wait_for(lambda signals: recorder.values("changedCentralDetector") == [[True]],
                              "detector")
            recorder.close()
            self.client.acknowledge_central()
        self.assertEqual(sorted(self.listed()), ["a", "b", "c"])
        entries = self.client.part(second=["EventlistHandler/CentralDetectorActive"]).rows
        self.assertEqual(len(entries), 3)
        self.assertEqual(self.overflows(), 1)

    def test_what_gives_way_without_acknowledgement_is_reported(self):
        for id_ in ["a", "b", "c"]:
            self.alarm(id_, ON)
        self.alarm("b", OFF)
        self.assertEqual(self.overflows(), 0)
        recorder = SignalRecorder(self.bus)
        self.alarm("d", ON)
        self.assertEqual(self.overflows(), 1)
        recorder.wait_for(lambda signals: "changedAlarmlist" in recorder.members(), "list changed")
        recorder.close()
        wait_for(lambda: any('"b" gives way' in line for line in self.service.lines), "warning")
        # Once there is room again, the next loss is another one.
        self.client.acknowledge(["a"])
        self.alarm("a", OFF)
        self.alarm("e", ON)
        self.alarm("f", ON)
        self.assertEqual(self.overflows(), 2)


class Durable(AlarmTest):
    def test_list_acknowledgements_and_detector_survive_kills(self):
        self.alarm("a", ON)
        self.alarm("b", ON, type_=FAULT)
        self.client.acknowledge(["a"], "meier")
        before = self.client.alarms().rows
        self.assertEqual(self.states(), [1, 1, 1, 1, 1])
        for _ in range(5):
            self.service.kill()
            self.service.start()
            self.assertEqual(self.client.alarms().rows, before)
            self.assertEqual(self.states(), [1, 1, 1, 1, 1])
        self.client.acknowledge_central()
        self.alarm("a", OFF)
        self.assertEqual(self.states(), [0, 0, 1, 1, 0])
        self.service.kill()
        self.service.start()
        self.assertEqual(self.states(), [0, 0, 1, 1, 0])


class Signals(AlarmTest):
    def told(self, recorder):
        """The signals of the alarm list but for the one without a state."""
        return [(member, values[0]) for path, _, member, values in recorder.poll()
                if path == "/AlarmlistRead" and values]

    def test_each_step_is_told_once(self):
        recorder = SignalRecorder(self.bus)
        steps = [
            (lambda: self.alarm("a", ON), [("changedAlarmInAlarmlist", True),
                                           ("changedActiveAlarmInAlarmlist", True),
                                           ("changedCentralDetector", True)]),
            (lambda: self.alarm("b", ON), []),
            (lambda: self.alarm("f", ON, type_=FAULT), [("changedFaultInAlarmlist", True),
                                                        ("changedActiveFaultInAlarmlist", True)]),
            (lambda: self.client.acknowledge(["a", "b"]), []),
            (lambda: self.client.acknowledge_central(), [("changedCentralDetector", False)]),
            (lambda: self.alarm("a", OFF), []),
            (lambda: self.alarm("b", OFF), [("changedAlarmInAlarmlist", False),
                                            ("changedActiveAlarmInAlarmlist", False)]),
            (lambda: self.alarm("f", OFF, type_=FAULT), [("changedActiveFaultInAlarmlist", False)]),
            (lambda: self.client.acknowledge(["f"]), [("changedFaultInAlarmlist", False)])]
        expected = []
        for step, signals in steps:
            step()
            self.client.alarm_state()
            expected += signals
        # The icon of a hash is announced after everything that was told before it.
        self.client.register_hash("ff")
        self.client.log_event(source_hashes="ff")
        recorder.wait_for(lambda signals: any(s[2] == "availableEventIcon" for s in signals), "marker")
        self.assertEqual(self.told(recorder), expected)
        recorder.wait_for(lambda signals: "changedAlarmlist" in recorder.members(), "list changed")
        recorder.close()

    def test_a_thousand_changes_are_heard_one_by_one_by_who_keeps_up(self):
        recorder = SignalRecorder(self.bus)
        self.alarm("keeps-detector", ON, type_=FAULT)
        for number in range(500):
            self.alarm("a", ON)
            recorder.wait_for(lambda signals: len([1 for s in self.told(recorder) if s == (
                "changedActiveAlarmInAlarmlist", True)]) == number + 1, "on %d" % number)
            self.alarm("a", OFF)
            recorder.wait_for(lambda signals: len([1 for s in self.told(recorder) if s == (
                "changedActiveAlarmInAlarmlist", False)]) == number + 1, "off %d" % number)
        heard = [state for member, state in self.told(recorder)
                 if member == "changedActiveAlarmInAlarmlist"]
        self.assertEqual(heard, [True, False] * 500)
        recorder.close()

    def test_the_end_of_a_burst_is_never_missing(self):
        recorder = SignalRecorder(self.bus)
        for number in range(2000):
            self.alarm("a", ON if number % 2 == 0 else OFF)
        self.client.alarm_state()
        recorder.wait_for(lambda signals: self.told(recorder), "a state")
        self.assertEqual(self.states()[1], 0)
        self.client.register_hash("ee")
        self.client.log_event(source_hashes="ee")
        recorder.wait_for(lambda signals: any(s[2] == "availableEventIcon" for s in signals), "marker")
        heard = [state for member, state in self.told(recorder)
                 if member == "changedActiveAlarmInAlarmlist"]
        # Never the same state twice in a row, and the last one is the true one.
        self.assertEqual(heard, [index % 2 == 0 for index in range(len(heard))])
        self.assertEqual(heard[-1:] or [False], [False])
        recorder.close()

    def test_after_a_kill_all_states_are_told_once(self):
        self.alarm("a", ON)
        self.client.alarm_state()
        self.service.kill()
        recorder = SignalRecorder(self.bus)
        self.service.start()
        recorder.wait_for(lambda signals: len(self.told(recorder)) >= 5, "all states")
        self.assertEqual(sorted(self.told(recorder)), [
            ("changedActiveAlarmInAlarmlist", True), ("changedActiveFaultInAlarmlist", False),
            ("changedAlarmInAlarmlist", True), ("changedCentralDetector", True),
            ("changedFaultInAlarmlist", False)])
        recorder.close()

    def test_after_an_orderly_restart_nothing_is_told_about_alarms(self):
        self.alarm("a", ON)
        self.client.alarm_state()
        self.assertEqual(self.service.stop(), 0)
        recorder = SignalRecorder(self.bus)
        self.service.start()
        self.client.register_hash("dd")
        self.client.log_event(source_hashes="dd")
        recorder.wait_for(lambda signals: any(s[2] == "availableEventIcon" for s in signals), "marker")
        self.assertEqual([path for path, _, _, _ in recorder.poll() if path == "/AlarmlistRead"], [])
        recorder.close()


class Icons(ServiceTest):
    def icons(self, recorder):
        return [(path, interface, values[0]) for path, interface, member, values in recorder.poll()
                if member == "availableEventIcon"]

    def test_the_answer_is_a_variant_with_a_structure(self):
        answer = self.client.register_hash("3fa9c1")
        self.assertEqual(answer.variant_level, 1)
        self.assertEqual((int(answer[0]), str(answer[1])), (0, ""))
        self.assertEqual(answer[2].variant_level, 1)

    def test_the_icon_of_an_event_is_announced_on_the_path_of_its_hash(self):
        recorder = SignalRecorder(self.bus)
        self.client.register_hash("3fa9c1")
        self.client.log_event(icon="EventlistAlarmOn", source_hashes="0000003fa9c1aaaaaa")
        recorder.wait_for(lambda signals: self.icons(recorder), "the icon")
        self.assertEqual(self.icons(recorder),
                         [("/Hash3fa9c1", "Interface.Event", "EventlistAlarmOn")])
        # Across the border of two hashes stands another one.
        self.client.log_event(icon="wrong", source_hashes="0003fa9c1000")
        self.client.log_event(icon="right", source_hashes="3fa9c1")
        recorder.wait_for(lambda signals: len(self.icons(recorder)) > 1, "the second icon")
        self.assertEqual(self.icons(recorder)[1:], [("/Hash3fa9c1", "Interface.Event", "right")])
        recorder.close()

    def test_at_registration_the_last_known_icon_is_announced(self):
        self.client.log_event(icon="first", source_hashes="abcd0123")
        self.client.log_event(icon="last", source_hashes="abcd0123")
        self.client.log_event(icon="other", source_hashes="ffff")
        self.client.complete()
        recorder = SignalRecorder(self.bus)
        self.client.register_hash("0123")
        recorder.wait_for(lambda signals: self.icons(recorder), "the icon")
        self.assertEqual(self.icons(recorder), [("/Hash0123", "Interface.Event", "last")])
        recorder.close()

    def test_a_registration_survives_a_kill(self):
        self.client.register_hash("cafe")
        self.client.log_event(icon="before", source_hashes="cafe")
        self.client.complete()
        self.service.kill()
        recorder = SignalRecorder(self.bus)
        self.service.start()
        self.client.log_event(icon="after", source_hashes="cafe")
        recorder.wait_for(lambda signals: self.icons(recorder), "the icon")
        self.assertEqual(self.icons(recorder), [("/Hashcafe", "Interface.Event", "after")])
        recorder.close()

    def test_the_empty_hash_hears_of_every_event(self):
        recorder = SignalRecorder(self.bus)
        self.client.register_hash("")
        self.client.complete()
        recorder.poll()
        before = len(self.icons(recorder))
        self.client.log_event(icon="any")
        recorder.wait_for(lambda signals: len(self.icons(recorder)) > before, "the icon")
        self.assertEqual(self.icons(recorder)[-1], ("/HashGlobal", "Interface.Event", "any"))
        recorder.close()

    def test_a_hash_that_can_be_no_path_is_refused(self):
        for hash_ in ["a b", "ä", 'x"y', "a/b", "../x", "x" * 201]:
            answer = self.client.register_hash(hash_)
            self.assertEqual(int(answer[0]), 1, hash_)
            self.assertNotEqual(str(answer[1]), "")
        self.client.log_event()
        self.assertEqual(len(self.client.descriptions()), 1)


if __name__ == "__main__":
    unittest.main()
